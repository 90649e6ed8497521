"""curl, lftp and rclone beside a session: the same work, with the same trust (the server's CA alone)."""

import functools
import pathlib
import subprocess

import clients
from daemons import SSH

CURL = ["curl", "--disable", "--silent", "--ssl-reqd"]
LFTP = [*clients.LFTP, "set ftp:ssl-force yes"]
# Over 1.3, its uploads to vsftpd break off: it does not wait for the server to close the data connection.
LFTP_UPLOAD = ["set ssl:priority NORMAL:-VERS-TLS1.3"]


def curl(server, work):
    options = {
        "download": ["--output", work.local],
        "upload": ["--upload-file", work.local],
        "list": ["--list-only", "--output", work.local],
        "test": ["--head"],
        "rename": ["--head", "--quote", f"-RNFR {work.remote}", "--quote", f"-RNTO {work.local}"],
        "delete": ["--head", "--quote", f"-DELE {work.remote}"],
    }[work.operation]
    return _prepared(work, curl_command(server, [*options, server.url(work.path)]), server.environment())


def curl_command(server, words):
    return [*CURL, "--cacert", server.small_trust, "--user", f"backup:{server.password}", *words]


def lftp(server, work):
    folder = pathlib.PurePosixPath(server.root) / work.path
    does = {
        "test": f"cd {folder}",
        "rename": f"mv {folder / work.remote} {folder / work.local}",
    }.get(work.operation) or clients.lftp_does(server, work)
    return _prepared(work, _lftp_command(server, work.operation, does), _lftp_environment(server))


def lftp_mirror(server, operation, local, remote, parallel):
    """A whole folder, from or to the server."""
    mirror = f"mirror --parallel={parallel}"
    there = server.root + remote
    does = f"{mirror} --reverse {local} {there}" if operation == "upload" else f"{mirror} {there} {local}"
    return _lftp_command(server, operation, does), _lftp_environment(server)


def rclone_copy(server, operation, local, remote, transfers):
    there = f"server:{server.root}{remote}"
    ends = [local, there] if operation == "upload" else [there, local]
    return ["rclone", "copy", "--transfers", transfers, "--checkers", transfers, *ends], _rclone_environment(server)


def rclone(server, work):
    there = f"server:{server.root}{work.path}"
    does = {
        "rename": ["moveto", f"{there}{work.remote}", f"{there}{work.local}"],
        "list": ["lsf", there],
        "download": ["copyto", there, work.local],
        "upload": ["copyto", work.local, there],
    }[work.operation]
    return _prepared(work, ["rclone", *does], _rclone_environment(server))


def _prepared(work, command, environment):
    def prepare():
        work.before()
        return command, environment

    return prepare


def _lftp_command(server, operation, does):
    settings = [*LFTP, *(LFTP_UPLOAD if operation == "upload" and not server.requires_tls13 else [])]
    if server.name == SSH:
        settings.append(f"set sftp:connect-program 'ssh -a -x -o UserKnownHostsFile={server.known_hosts()}'")
    return clients.lftp_command(server, server.small_trust, settings, does)


def _lftp_environment(server):
    return {**server.environment(), **clients.lftp_login(server)}


@functools.cache
def _obscured(password):
    command = ["rclone", "obscure", "-"]
    return subprocess.run(command, input=password, capture_output=True, text=True, check=True).stdout.strip()


def _rclone_environment(server):
    settings = {
        "HOST": "localhost",
        "PORT": str(server.port),
        "USER": "backup",
        "PASS": _obscured(server.password),
    }
    if server.name == SSH:
        # It has no shell to run a checksum in.
        settings |= {"TYPE": "sftp", "KNOWN_HOSTS_FILE": str(server.known_hosts()), "SHELL_TYPE": "none"}
    else:
        settings |= {"TYPE": "ftp", "TLS" if server.is_implicit else "EXPLICIT_TLS": "true"}
        # Over 1.3, its handshakes with vsftpd fail.
        settings |= {} if server.requires_tls13 else {"DISABLE_TLS13": "true"}
    return {
        **server.environment(),
        **{f"RCLONE_CONFIG_SERVER_{name}": value for name, value in settings.items()},
        "RCLONE_CONFIG": "/dev/null",
        "SSL_CERT_FILE": str(server.small_trust),
    }
