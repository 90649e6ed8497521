"""The servers that sessions and the command are measured with: Debian's vsftpd and ProFTPD, which demand TLS at login,
and OpenSSH."""

import contextlib
import os

from serving import Server

NAMES = ["vsftpd", "ProFTPD"]
SSH = "OpenSSH"


class Daemon(Server):
    """Serves a folder of its own as long as the `with` lasts. Needs root, and what scripts/servers unpacks."""

    def __init__(self, build, name):
        super().__init__(build)
        self.name = name
        # Where the user's files are in a URL, and for the tools.
        self.root = "/run/served/" if name == SSH else "/"

    def __enter__(self):
        super().__enter__()
        # It has its own user.
        self.password = (self.folder / "password").read_text()
        return self

    def _command(self):
        return [self.build / "bench/bench-daemon", self.name, self.folder]

    def url(self, path):
        scheme = "sftp" if self.name == SSH else "ftp"
        return f"{scheme}://localhost:{self.port}{self.root}{path}"

    def known_hosts(self):
        return self.folder / "known_hosts"

    def make_writable_folder(self, name):
        """A folder of the user who logs in. Gives its path on this machine."""
        folder = self.served / name
        folder.mkdir(exist_ok=True)
        owner = self.served.stat()
        os.chown(folder, owner.st_uid, owner.st_gid)
        return folder


@contextlib.contextmanager
def both(build, names=NAMES):
    with contextlib.ExitStack() as stack:
        yield [stack.enter_context(Daemon(build, name)) for name in names]


def all_three(build):
    return both(build, [*NAMES, SSH])


class Distant(Server):
    """The repository's own server, which waits before each reply to a command that a warm call sends."""

    DELAY_MS = 50
    COMMANDS = ["CWD", "DELE", "EPSV", "LIST", "MDTM", "MLSD", "MLST", "NLST", "RETR", "RNFR", "RNTO", "SIZE", "STOR"]
    name = "test server"

    def _command(self):
        delays = [f"{command}=delay:{self.DELAY_MS}" for command in self.COMMANDS]
        return [*super()._command(), *(word for delay in delays for word in ("--fault", delay))]

    def make_writable_folder(self, name):
        folder = self.served / name
        folder.mkdir(exist_ok=True)
        return folder


class Stalling(Server):
    """The repository's own server, which stops sending in the middle of a download."""

    def _command(self):
        return [*super()._command(), "--fault", "DATA=stall-after:100000"]
