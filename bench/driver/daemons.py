"""The servers that sessions are measured with: Debian's vsftpd and ProFTPD, which demand TLS at login."""

import contextlib
import os

from serving import Server

NAMES = ["vsftpd", "ProFTPD"]


class Daemon(Server):
    """Serves a folder of its own as long as the `with` lasts. Needs root, and what scripts/servers unpacks."""

    def __init__(self, build, name):
        super().__init__(build)
        self.name = name

    def __enter__(self):
        super().__enter__()
        # It has its own user.
        self.password = (self.folder / "password").read_text()
        return self

    def _command(self):
        return [self.build / "bench/bench-daemon", self.name, self.folder]

    def url(self, path):
        return f"ftp://localhost:{self.port}/{path}"

    def make_writable_folder(self, name):
        """A folder of the user who logs in. Gives its path on this machine."""
        folder = self.served / name
        folder.mkdir(exist_ok=True)
        owner = self.served.stat()
        os.chown(folder, owner.st_uid, owner.st_gid)
        return folder


@contextlib.contextmanager
def both(build):
    with contextlib.ExitStack() as stack:
        yield [stack.enter_context(Daemon(build, name)) for name in NAMES]


class Stalling(Server):
    """The repository's own server, which stops sending in the middle of a download."""

    def _command(self):
        return [*super()._command(), "--fault", "DATA=stall-after:100000"]
