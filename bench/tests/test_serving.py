"""Where the server's files go, and what its clients find."""

import collections
import os
import pathlib
import unittest
from unittest import mock

import serving

Usage = collections.namedtuple("Usage", "free")


def with_room(free):
    """Free bytes by folder."""
    return mock.patch("shutil.disk_usage", lambda folder: Usage(free[str(folder)]))


class Place(unittest.TestCase):
    def setUp(self):
        self.enterContext(mock.patch("tempfile.gettempdir", lambda: "/elsewhere"))
        self.enterContext(mock.patch.object(serving, "MEMORY", pathlib.Path("/")))

    def test_it_is_in_memory(self):
        with with_room({"/": serving.ROOM, "/elsewhere": serving.ROOM}):
            self.assertEqual(pathlib.Path("/"), serving.place())

    def test_it_is_on_a_disk_where_memory_is_short(self):
        with with_room({"/": serving.ROOM - 1, "/elsewhere": serving.ROOM}):
            self.assertEqual(pathlib.Path("/elsewhere"), serving.place())

    def test_it_is_nowhere_where_all_is_short(self):
        with with_room({"/": 0, "/elsewhere": serving.ROOM - 1}):
            self.assertRaisesRegex(RuntimeError, "^/ and /elsewhere have too little room: .* 1088 MiB", serving.place)


class Clients(unittest.TestCase):
    def setUp(self):
        self.enterContext(mock.patch.dict(os.environ, {"https_proxy": "http://localhost:1", "ALL_PROXY": "x"}))
        self.server = self.enterContext(serving.Server(os.environ["BENCH_BUILD"]))

    def test_they_find_no_proxy(self):
        self.assertEqual([], [name for name in self.server.environment() if name.lower().endswith("proxy")])

    def test_what_they_discard_leaves_no_file(self):
        target = self.server.discard()
        target.write_text("gone")
        self.assertEqual("", target.read_text())
        self.assertEqual(target, self.server.discard())


if __name__ == "__main__":
    unittest.main()
