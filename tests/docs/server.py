"""The test server that programs and commands of the documents talk to, in place of backup.example.com."""

import pathlib
import subprocess

HOST = "backup.example.com"
PASSWORD = "secret"
FILE = "the content of a backup\n" * 100


class Server:
    """Serves weekly/sunday.bak to the user and the password that the documents have, until it is left."""

    def __init__(self, program, folder, tls):
        self.folder = pathlib.Path(folder)
        self.transcript = self.folder / "transcript"
        (self.folder / "served/weekly").mkdir(parents=True)
        (self.folder / "served/weekly/sunday.bak").write_text(FILE)
        (self.folder / "password").write_text(PASSWORD + "\n")
        self.process = subprocess.Popen(
            [program, "--root", str(self.folder / "served"), "--password-file", str(self.folder / "password"),
             "--make-certificates", str(self.folder / "certificates"), "--tls", tls, "--until-eof",
             "--transcript", str(self.transcript)],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        said = self.process.stdout.readline()
        if ":" not in said:
            self.process.kill()
            raise RuntimeError("The test server did not start.")
        self.port = int(said.strip().rsplit(":", 1)[1])
        self.ca = self.folder / "certificates/ca.pem"

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.communicate()

    def logins(self):
        """How often somebody has logged in. The server must have ended."""
        return self.transcript.read_text().count("< 230 ") if self.transcript.exists() else 0
