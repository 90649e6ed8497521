"""The suites that measure sessions and the command, from end to end, with the least that there can be: what they need is
there, and their rows are complete. As root, with Debian's daemons."""

import dataclasses
import os
import unittest

import command_trees
import daemons
import measuring
import session_cold
import session_folders
import session_large
import session_quiet
import session_warm
from effort import QUICK
from figures import Goals
from works import MIB

BUILD = os.environ["BENCH_BUILD"]
EFFORT = dataclasses.replace(
    QUICK,
    warm_calls=3,
    folder_files=5,
    folder_rounds=2,
    large_size=MIB,
    kept_connections=3,
    session_sizes=[MIB, 2 * MIB],
    tree_files=5,
    tree_large_size=MIB,
)


class Suites(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.servers = cls.enterClassContext(daemons.both(BUILD))

    def setUp(self):
        self.recorder = measuring.Recorder(self.servers[0].build, lambda text: None)
        self.goals = Goals()

    def rows(self, suite, columns=2):
        tables = suite.suite(self.servers, self.recorder, self.goals, EFFORT)
        for table in tables:
            for row in table.rows:
                self.assertEqual(len(table.head), len(row), table.title)
        return [[tuple(row[:columns]) for row in table.rows] for table in tables]

    def on_both(self, names):
        return [(server, name) for server in daemons.NAMES for name in names]

    def test_cold(self):
        names = ["test", "rename", "delete", "list 100 names", "download 20 kB", "upload 20 kB"]
        self.assertEqual([self.on_both(names)], self.rows(session_cold))

    def test_warm(self):
        names = ["rename", "size", "list 100 names", "download 20 kB", "upload 20 kB"]
        self.assertEqual([self.on_both(names), [(name, 1) for name in names]], self.rows(session_warm))

    def test_folders(self):
        ways = ["upload", "download", "both ways"]
        expected = [(server, way, number) for server in daemons.NAMES for number in (1, 4) for way in ways]
        self.assertEqual([expected], self.rows(session_folders, columns=3))

    def test_large(self):
        self.assertEqual([self.on_both(["upload", "download"])], self.rows(session_large))

    def test_quiet(self):
        waiting, kept, sizes = self.rows(session_quiet, columns=1)
        self.assertEqual([("a stalled download",), ("an idle kept connection",)], waiting)
        self.assertEqual([("vsftpd",), ("ProFTPD",)], kept)
        self.assertEqual([("1 MiB",), ("2 MiB",)], sizes)

    def test_trees(self):
        ways = [("push", 1), ("push", 4), ("pull", 1), ("pull", 4)]
        small, large, again, start = self.rows(command_trees, columns=3)
        expected = [(server, *way) for server in daemons.NAMES for way in ways]
        both = [("both ways", 1), ("both ways", 4)]
        self.assertEqual([(server, *row) for server in daemons.NAMES for row in ways + both], small)
        self.assertEqual(expected, large)
        self.assertEqual([row for row in expected if row[2] == 4], again)
        self.assertEqual(1, len(start))

    def test_trees_over_ssh(self):
        self.servers = [self.enterContext(daemons.Daemon(BUILD, daemons.SSH))]
        small, _, _, _ = self.rows(command_trees, columns=3)
        self.assertEqual([("OpenSSH", "push", 1), ("OpenSSH", "push", 4)], small[:2])


if __name__ == "__main__":
    unittest.main()
