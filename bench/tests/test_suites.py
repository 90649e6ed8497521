"""The suites that measure calls, from end to end, with the least that there can be: what they need is there, and their
rows are complete."""

import os
import pathlib
import subprocess
import tempfile
import unittest
from types import SimpleNamespace
from unittest import mock

import beside_bare
import beside_tools
import clients
import fixed
import measuring
import micro
import serving
import sizes
import threads
import users
import works
from figures import Goals

MIB = works.MIB
EFFORT = SimpleNamespace(
    sizes={MIB: 1},
    names={10: 1},
    small_pairs=1,
    threads=[1, 2],
    thread_rounds=1,
    calls_at_once=2,
    memory_sizes=[MIB, 2 * MIB],
    memory_rounds=1,
    fixed_rounds=1,
)
OPERATIONS = ["download 1 MiB", "upload 1 MiB", "list 10 names", "rename", "delete", "connection test"]


class Suites(unittest.TestCase):
    def setUp(self):
        self.server = self.enterContext(serving.Server(os.environ["BENCH_BUILD"]))
        self.recorder = measuring.Recorder(self.server.build, lambda text: None)
        self.goals = Goals()

    def rows(self, suite):
        tables = suite.suite(self.server, self.recorder, self.goals, EFFORT)
        for table in tables:
            for row in table.rows:
                self.assertEqual(len(table.head), len(row), table.title)
        return [row[0] for row in tables[0].rows]

    def test_beside_the_bare_program(self):
        self.assertEqual(OPERATIONS, self.rows(beside_bare))

    def test_beside_the_tools(self):
        self.assertEqual(OPERATIONS, self.rows(beside_tools))

    def test_threads(self):
        expected = ["list 1,000 names"] * 2 + ["download 1 MiB"] * 2
        self.assertEqual(expected, self.rows(threads))

    def test_sizes(self):
        self.assertEqual(["1 MiB", "2 MiB"], self.rows(sizes))

    def test_fixed_costs(self):
        self.server = self.server.build
        self.enterContext(mock.patch.object(users, "newer_libcurl", lambda: "/nowhere"))
        expected = [
            "the machine's trust store, for each TLS connection",
            "libcurl's wait before a data connection",
            "a download's size check, which logs in by itself",
            "a connection for each call",
            "the same wait, in a listing by SFtpClient",
            f"fsync of a session's download, in {tempfile.gettempdir()}",
        ]
        self.assertEqual(expected, self.rows(fixed))

    def test_one_of_them_is_between_two_releases_of_libcurl(self):
        with mock.patch.object(users, "newer_libcurl", lambda: "newer"):
            cost = fixed._wait_of_the_library(self.server)
        folders = [prepare()[1].get("LD_LIBRARY_PATH") for prepare in (cost.with_it, cost.without)]
        self.assertEqual([os.environ.get("LD_LIBRARY_PATH"), "newer"], folders)

    def test_the_last_of_them_is_what_the_option_says(self):
        with tempfile.TemporaryDirectory() as disk:
            cost = fixed._sync(self.server, pathlib.Path(disk))
            synced = []
            for prepare in (cost.with_it, cost.without):
                command, environment = prepare()
                trace = ["strace", "-f", "-qq", "-e", "trace=fsync", "-o", f"{disk}/trace"]
                words = [str(word) for word in [*trace, *command]]
                # The leak sanitizer can do nothing in a process that is traced.
                environment |= {"ASAN_OPTIONS": "detect_leaks=0"}
                subprocess.run(words, env=environment, check=True, capture_output=True)
                synced.append("fsync(" in pathlib.Path(disk, "trace").read_text())
        self.assertEqual([True, False], synced)

    def test_each_has_its_turn_in_every_round_and_the_order_varies(self):
        turns = []

        def client(name):
            return lambda: turns.append(name) or (["true"], None)

        names = ["bare", "library", "curl"]
        runs = self.recorder.alternate("suite", "nothing", 24, {name: client(name) for name in names})
        rounds = [tuple(turns[at : at + 3]) for at in range(0, len(turns), 3)]
        self.assertEqual([24] * 3, [len(runs[name]) for name in names])
        self.assertEqual({tuple(sorted(names))}, {tuple(sorted(each)) for each in rounds})
        self.assertEqual(6, len(set(rounds)))
        self.assertEqual(turns, [row[2] for row in self.recorder.rows])

    def able(self, done=lambda name: True, **codes):
        """The runs of clients that end with these codes in turn, of three rounds."""
        codes = {name: iter(of_client) for name, of_client in codes.items()}

        def client(name):
            return lambda: (["sh", "-c", f"exit {next(codes[name])}"], None)

        return self.recorder.alternate_able("suite", "nothing", 3, {name: client(name) for name in codes}, done)

    def test_a_clients_first_failure_ends_its_turns(self):
        runs = self.able(able=[0, 0, 0], later=[0, 9], never=[7])
        self.assertEqual(["fails (9), round 2", "fails (7)"], [str(runs[name]) for name in ("later", "never")])
        self.assertEqual(3, len(runs["able"]))
        kept = [(name, number) for _, _, name, number, *_ in self.recorder.rows]
        self.assertEqual([("able", 0), ("able", 1), ("able", 2), ("later", 0)], sorted(kept))

    def test_a_run_without_its_effect_is_a_failure(self):
        effects = iter([True, False])
        runs = self.able(liar=[0, 0], done=lambda name: next(effects))
        self.assertEqual("fails (0), round 2", str(runs["liar"]))

    def test_a_failed_call_ends_the_benchmark(self):
        missing = clients.Work("missing", "list", "no-such-folder/")
        call = clients.program(self.server, "library", missing)
        with self.assertRaisesRegex(RuntimeError, r"^bench-library list .* ended with 78\.$"):
            self.recorder.alternate("suite", "missing", 1, {"library": call})


class Micro(unittest.TestCase):
    def test_every_piece_is_timed(self):
        found = micro.run(os.environ["BENCH_BUILD"], "--benchmark_min_time=0.001")
        self.assertEqual(micro.PIECES.keys(), found.keys())


if __name__ == "__main__":
    unittest.main()
