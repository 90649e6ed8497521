"""The comparison is fair: the bare program says to the server what the library says, word by word."""

import os
import subprocess
import unittest

import serving

BUILD = os.environ["BENCH_BUILD"]


class Transcripts(unittest.TestCase):
    def sessions_of(self, program, operation, path, local, remote):
        with serving.Server(BUILD, keep_transcript=True) as server:
            server.make_file("file.bak", 1 << 20)
            server.make_folder("folder", 3)
            local = str(server.folder / "source") if local == "SOURCE" else local
            (server.folder / "source").write_bytes(bytes(300001))
            command = [f"{BUILD}/bench/{program}", operation, server.url(path), local, remote]
            done = subprocess.run(command, env=server.environment(server.small_trust), capture_output=True, check=False)
            self.assertEqual(0, done.returncode, f"{program} {operation}: {done.stderr}")
            return server.sessions()

    def compare(self, operation, path, local="/dev/null", remote="-", sessions=1):
        library = self.sessions_of("bench-library", operation, path, local, remote)
        self.assertEqual(sessions, len(library))
        # A session of which nothing was written down would be like any other.
        self.assertTrue(all("> PASS ****" in session for session in library), library)
        self.assertEqual(library, self.sessions_of("bench-bare", operation, path, local, remote))

    def test_connection_test(self):
        self.compare("test", "folder/")

    def test_download(self):
        self.compare("download", "file.bak", sessions=2)

    def test_upload(self):
        self.compare("upload", "new/folder/file.bak", local="SOURCE")

    def test_listing(self):
        self.compare("list", "folder/")

    def test_rename(self):
        self.compare("rename", "folder/", local="new.bak", remote="backup-000000.bak")

    def test_delete(self):
        self.compare("delete", "folder/", remote="backup-000000.bak")


class ExplicitServer(serving.Server):
    """As sessions are measured: TLS on demand, and nothing without it."""

    def _command(self):
        words = ["explicit" if word == "implicit" else word for word in super()._command()]
        return [*words, "--require-tls"]

    def url(self, path):
        return f"ftp://localhost:{self.port}/{path}"


class SessionTranscripts(unittest.TestCase):
    def session_of(self, program, operation, path, local):
        with ExplicitServer(BUILD, keep_transcript=True) as server:
            server.make_file("file.bak", 300001)
            local = str(server.make_file("source.bak", 300001)) if local == "SOURCE" else local
            command = [f"{BUILD}/bench/{program}", operation, server.url(path), local, "-"]
            done = subprocess.run(command, env=server.environment(), capture_output=True, check=False)
            self.assertEqual(0, done.returncode, f"{program} {operation}: {done.stderr}")
            if operation == "upload":
                self.assertEqual(bytes(300001), (server.served / path).read_bytes())
            return server.sessions()[0]

    def test_the_plain_program_downloads_as_a_session_does(self):
        session = self.session_of("bench-session", "download", "file.bak", "/dev/null")
        self.assertIn("= 300001 bytes sent", session)
        self.assertEqual(session, self.session_of("bench-plain", "download", "file.bak", "/dev/null"))

    def test_the_plain_program_uploads_as_a_session_does_but_to_the_place_itself(self):
        session = self.session_of("bench-session", "upload", "sent.bak", "SOURCE")
        temporary = next(line.partition(" RNFR ")[2] for line in session if " RNFR " in line)
        places = [line.replace(temporary, "sent.bak") for line in session]
        extra = places.index("> SIZE sent.bak")
        self.assertEqual(["> SIZE sent.bak", "> RNFR sent.bak", "> RNTO sent.bak"], places[extra : extra + 6 : 2])
        plain = self.session_of("bench-plain", "upload", "sent.bak", "SOURCE")
        self.assertIn("= 300001 bytes received", plain)
        self.assertEqual(places[:extra] + places[extra + 6 :], plain)

    def test_openssl_alone_moves_the_same_bytes(self):
        self.assertIn("= 300001 bytes sent", self.session_of("bench-openssl", "download", "file.bak", "/dev/null"))
        self.assertIn("= 300001 bytes received", self.session_of("bench-openssl", "upload", "sent.bak", "SOURCE"))


if __name__ == "__main__":
    unittest.main()
