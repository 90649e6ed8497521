"""The command beside lftp, rclone and sftp: the same tree, with the same trust."""

import session_tools
import ssh_tools
from daemons import SSH

# What the command calls the two ways.
PUSH, PULL = "push", "pull"


def sftpclient(server, *words):
    """A call of the command, and its environment."""
    # What a user has set up for it would be measured, too.
    environment = {name: value for name, value in server.environment().items() if not name.startswith("SFTPCLIENT_")}
    return [server.build / "cli/sftpclient", *words], environment


def command(server, way, local, remote, jobs):
    url = server.url(remote + "/")
    ends = [local, url] if way == PUSH else [url, local]
    trust = ["--known-hosts", server.known_hosts()] if server.name == SSH else ["--ca", server.small_trust]
    login = ["--user", "backup", "--password-file", server.folder / "password"]
    return sftpclient(server, way, *ends, "--jobs", jobs, *login, *trust, "--quiet")


def lftp(server, way, local, remote, jobs):
    return session_tools.lftp_mirror(server, _operation(way), local, remote, jobs)


def rclone(server, way, local, remote, jobs):
    return session_tools.rclone_copy(server, _operation(way), local, remote, jobs)


def sftp(server, way, local, remote, jobs):
    return ssh_tools.sftp_folder(server, _operation(way), local, remote, jobs)


def _operation(way):
    return {PUSH: "upload", PULL: "download"}[way]
