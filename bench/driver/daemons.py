"""The servers that users' clients, sessions and the command are measured with: Debian's daemons, which demand TLS at
login, OpenSSH, and the repository's own where replies or the way take their time."""

import contextlib
import os

from serving import Server

NAMES = ["vsftpd", "ProFTPD"]
SSH = "OpenSSH"
# The repository's own, over explicit TLS, and with 50 ms from a request to its reply.
OWN, FAR = "test-server", "far-test-server"


class Daemon(Server):
    """Serves a folder of its own as long as the `with` lasts. Debian's need root, and what scripts/servers unpacks."""

    def __init__(self, build, name):
        super().__init__(build)
        self.name = name
        self.is_implicit = name == "vsftpd-implicit"
        self.requires_tls13 = name == "vsftpd-1.3"
        if name == SSH:
            self.root = "/run/served/"

    def __enter__(self):
        super().__enter__()
        # It has its own user.
        self.password = (self.folder / "password").read_text()
        return self

    def _command(self):
        return [self.build / "bench/bench-daemon", self.name, self.folder]

    def url(self, path):
        scheme = "sftp" if self.name == SSH else "ftps" if self.is_implicit else "ftp"
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
