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


if __name__ == "__main__":
    unittest.main()
