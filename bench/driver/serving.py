"""The server that everything is measured against: the repository's own, over TLS from the first byte."""

import os
import pathlib
import secrets
import shutil
import subprocess
import tempfile

BUNDLE = pathlib.Path("/etc/ssl/certs/ca-certificates.crt")
# Files in memory: what a disk takes is no concern of what is compared.
MEMORY = pathlib.Path("/dev/shm")
# For the largest upload, and the little besides.
ROOM = (1 << 30) + (64 << 20)


def place():
    """Where the served files go: a container's /dev/shm may be too small."""
    enough = MEMORY.is_dir() and shutil.disk_usage(MEMORY).free >= ROOM
    chosen = MEMORY if enough else pathlib.Path(tempfile.gettempdir())
    if shutil.disk_usage(chosen).free < ROOM:
        raise RuntimeError(f"{MEMORY} and {chosen} have too little room: one of them needs {ROOM >> 20} MiB.")
    return chosen


class Server:
    """Serves a folder of its own as long as the `with` lasts."""

    # Where the user's files are in a URL, and for the tools.
    root = "/"
    is_implicit = True
    requires_tls13 = False

    def __init__(self, build, keep_transcript=False):
        self.build = pathlib.Path(build)
        self.password = secrets.token_urlsafe(24)
        self._keep_transcript = keep_transcript

    def __enter__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="sftpclient-bench-", dir=place()))
        try:
            self.served = self.folder / "served"
            self.served.mkdir()
            (self.folder / "password").write_text(self.password)
            self._process = subprocess.Popen(self._command(), stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
            said = self._process.stdout.readline()
            if not said:
                raise RuntimeError("The test server did not start; what it said is above.")
            self.port = int(said.rpartition(":")[2])
            self.certificate = self.folder / "certificates" / "ca.pem"
            self._make_trust_stores()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        self.stop()
        shutil.rmtree(self.folder)

    def _command(self):
        command = [self.build / "tests/server/ftp-test-server", "--root", self.served, "--tls", "implicit"]
        command += ["--make-certificates", self.folder / "certificates"]
        command += ["--user", "backup", "--password-file", self.folder / "password", "--until-eof"]
        if self._keep_transcript:
            command += ["--transcript", self.folder / "transcript"]
        return command

    def _make_trust_stores(self):
        """As an administrator makes them: the machine's store with the server's CA in it; and one of that CA alone."""
        own = self.certificate.read_text()
        self.machine_trust = self.folder / "machine-trust.pem"
        self.machine_trust.write_text(BUNDLE.read_text() + own)
        self.small_trust = self.folder / "small-trust.pem"
        self.small_trust.write_text(own)

    def stop(self):
        """Ends the server once all sessions are over."""
        process = getattr(self, "_process", None)
        if process is not None and process.poll() is None:
            process.stdin.close()
            process.wait()
            process.stdout.close()

    def sessions(self):
        """What was said in each session: a list of lines each. Stops the server, so that all of them are over."""
        self.stop()
        text = (self.folder / "transcript").read_text()
        return [session.splitlines() for session in text.split("\n\n") if session]

    def url(self, path):
        return f"ftps://localhost:{self.port}/{path}"

    def environment(self, trust=None):
        """What the programs under measurement find in their environment."""
        return {
            # A proxy would be measured, too.
            **{name: value for name, value in os.environ.items() if not name.lower().endswith("_proxy")},
            "BENCH_PASSWORD": self.password,
            "BENCH_CA": str(self.certificate),
            "SFTPCLIENT_DEFAULT_TRUST": str(trust or self.machine_trust),
        }

    def discard(self):
        """/dev/null by another name: a client that first removes or renames its target takes the link."""
        link = self.folder / "discard"
        link.unlink(missing_ok=True)
        link.symlink_to("/dev/null")
        return link

    def make_file(self, name, size):
        """A file of zeros that takes no room. Nothing on the way looks at what the bytes are."""
        with open(self.served / name, "wb") as file:
            file.truncate(size)
        return self.served / name

    def make_folder(self, name, names):
        folder = self.served / name
        folder.mkdir()
        for number in range(names):
            (folder / f"backup-{number:06}.bak").touch()
        return name + "/"
