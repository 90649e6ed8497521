"""Which figures of the command are held to which goals, with made-up runs, and how the tools are called."""

import pathlib
import tempfile
import unittest
from types import SimpleNamespace
from unittest import mock

import command_tools
import command_trees
from command_tools import PULL, PUSH
from daemons import SSH
from figures import Goals
from measuring import Run


def run(wall=1.0, cpu=1.0, peak=1000):
    """As often as it takes to decide a goal."""
    return [Run(wall, cpu / 2, cpu / 2, peak)] * 6


class Judged(unittest.TestCase):
    def missed(self, judge, name="vsftpd", jobs=1, **runs):
        goals = Goals()
        everyone = {"command": run(), "lftp": run(), "rclone": run(), **runs}
        row = command_trees._row(SimpleNamespace(name=name), PUSH, jobs, everyone, judge, goals)
        self.assertEqual(row[-1] == "met", all(verdict == "met" for _, _, verdict in goals.judged))
        return {goal for goal, _, _, not_met_by in goals.summary() if not_met_by != "–"}

    def test_small_files_go_so_many_times_as_fast_as_by_lftp(self):
        def missed(**runs):
            return self.missed(command_trees._lftp_verdict, **runs)

        self.assertEqual(set(), missed(lftp=run(8)))
        self.assertEqual({command_trees.lftp_goal(1)}, missed(lftp=run(7.9)))
        self.assertEqual(set(), missed(lftp=run(4), jobs=4))
        self.assertEqual({command_trees.lftp_goal(4)}, missed(lftp=run(3.9), jobs=4))
        self.assertEqual(set(), missed(lftp=run(1), name=SSH))

    def test_both_ways_are_a_push_and_the_pull_of_its_round(self):
        pushed, pulled = [run(1, 2, 30)[0], run(5)[0]], [run(10, 20, 4)[0], run(7)[0]]
        both = command_trees.both_ways({"lftp": pushed}, {"lftp": pulled})
        self.assertEqual([(11, 22, 30), (12, 2, 1000)], [(each.wall, each.cpu, each.peak) for each in both["lftp"]])

    def test_rclone_takes_more(self):
        for judge in (command_trees._verdicts_beside_rclone, command_trees._large_verdicts):
            cpu, peak = command_trees.RCLONE_GOALS.values()
            self.assertEqual(set(), self.missed(judge, command=run()))
            self.assertEqual({cpu}, self.missed(judge, command=run(cpu=1.01)))
            self.assertEqual({peak}, self.missed(judge, command=run(peak=1001)))

    def test_large_files_are_compared_with_the_best_tool(self):
        def missed(**runs):
            return self.missed(command_trees._large_verdicts, **runs)

        self.assertEqual(set(), missed(command=run(1.02), sftp=run(2)))
        self.assertEqual({command_trees.LARGE_GOAL}, missed(command=run(1.03), sftp=run(2)))
        self.assertEqual({command_trees.LARGE_GOAL}, missed(command=run(1.02), sftp=run(0.9)))

    def test_the_start_takes_less_than_ten_milliseconds(self):
        def verdict(cpu):
            recorder = SimpleNamespace(alternate=lambda *_: {"command": run(cpu=cpu)})
            return command_trees._start(None, recorder, Goals(), SimpleNamespace(cold_rounds=1)).rows[0][-1]

        self.assertEqual(["met", "NOT MET"], [verdict(0.0099), verdict(0.0101)])


class Called(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.enterContext(mock.patch.dict("os.environ", {"SFTPCLIENT_JOBS": "9"}))

    def server(self, name):
        return SimpleNamespace(
            name=name,
            build=pathlib.Path("/build"),
            folder=self.folder,
            port=2222,
            root="/top/",
            small_trust="ca.pem",
            known_hosts=lambda: "known",
            url=lambda path: f"x://localhost:2222/top/{path}",
            environment=lambda: {"SFTPCLIENT_DEFAULT_TRUST": "store", "BENCH_PASSWORD": "secret"},
        )

    def test_the_command_gets_both_ends_and_the_trust(self):
        words, environment = command_tools.command(self.server("vsftpd"), PUSH, "here", "there", 4)
        self.assertEqual(["push", "here", "x://localhost:2222/top/there/", "--jobs", 4], words[1:6])
        self.assertEqual(["--ca", "ca.pem", "--quiet"], words[-3:])
        self.assertEqual({"BENCH_PASSWORD": "secret"}, environment)
        words, _ = command_tools.command(self.server(SSH), PULL, "here", "there", 1)
        self.assertEqual(["pull", "x://localhost:2222/top/there/", "here"], words[1:4])
        self.assertEqual(["--known-hosts", "known", "--quiet"], words[-3:])

    def test_sftp_gets_the_password_without_a_terminal(self):
        for way, expected in ((PUSH, "put -r here/. /top/there\n"), (PULL, "get -r /top/there/. here\n")):
            _, environment = command_tools.sftp(self.server(SSH), way, "here", "there", 1)
            self.assertEqual(expected, (self.folder / "batch").read_text())
        self.assertEqual("force", environment["SSH_ASKPASS_REQUIRE"])
        self.assertTrue(pathlib.Path(environment["SSH_ASKPASS"]).stat().st_mode & 0o100)

    def test_sftp_runs_where_it_can(self):
        for name, jobs, expected in (("vsftpd", 1, False), (SSH, 1, True), (SSH, 4, False)):
            self.assertEqual(expected, "sftp" in command_trees._clients(self.server(name), jobs))


if __name__ == "__main__":
    unittest.main()
