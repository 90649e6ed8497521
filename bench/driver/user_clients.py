"""The same call by each client that a user may choose, each with the server's CA or host key by its own option."""

import session_tools
import ssh_tools
from clients import program
from daemons import SSH

WITH_LIBCURL = ["SFtpClient", "SFtpSession", "curl"]


def each(server, work):
    """The clients there are for a server, by name."""
    clients = {
        "SFtpClient": program(server, "library", work),
        "SFtpSession": session(server, work),
        "curl": ssh_tools.curl(server, work) if server.name == SSH else session_tools.curl(server, work),
        "lftp": session_tools.lftp(server, work),
        "rclone": session_tools.rclone(server, work),
    }
    if server.name == SSH:
        clients["sftp"] = ssh_tools.sftp(server, work)
    return clients


def session(server, work, connections=1):
    prepare = program(server, "session", work, threads=connections)
    if server.name != SSH:
        return prepare
    return with_environment(prepare, BENCH_KNOWN_HOSTS=str(server.known_hosts()))


def repeated(server, work, calls):
    """SFtpClient has a connection for each call, also where a process makes several."""
    return program(server, "library", work, calls=calls)


def with_environment(prepare, **more):
    def prepared():
        words, environment = prepare()
        return words, {**environment, **more}

    return prepared


def with_library(prepare, folder):
    return with_environment(prepare, LD_LIBRARY_PATH=str(folder))
