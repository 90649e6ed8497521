"""Which figures of sessions are held to which goals, with made-up runs."""

import contextlib
import pathlib
import tempfile
import unittest
from types import SimpleNamespace
from unittest import mock

import session_cold
import session_folders
import session_large
import session_quiet
import session_warm
from clients import Work
from figures import Goals
from measuring import Run


def run(wall=1.0, cpu=1.0, peak=1000):
    """As often as it takes to decide a goal."""
    return [Run(wall, cpu / 2, cpu / 2, peak)] * 6


class Recorder:
    """Gives the runs of each client by its name, the same for every work, or in turn from a list."""

    def __init__(self, runs):
        self.runs = runs

    def alternate(self, suite, work, rounds, clients):
        runs = self.runs.pop(0) if isinstance(self.runs, list) else self.runs
        return {name: runs[name] for name in clients}


SERVER = SimpleNamespace(name="vsftpd", build=None)


def missed(goals):
    """The goals that were missed."""
    return {goal for goal, _, _, not_met_by in goals.summary() if not_met_by != "–"}


class OneOperation(unittest.TestCase):
    def missed(self, operation, session, lftp, curl):
        goals = Goals()
        with (
            mock.patch.object(session_cold.session_works, "small", lambda server: [Work(operation, operation, "path")]),
            mock.patch.multiple(session_cold.session_tools, lftp=mock.DEFAULT, curl=mock.DEFAULT),
            mock.patch.object(session_cold, "program"),
        ):
            recorder = Recorder({"session": session, "lftp": lftp, "curl": curl})
            row = session_cold.suite([SERVER], recorder, goals, SimpleNamespace(cold_rounds=1))[0].rows[0]
        self.assertEqual(row[-1] == "met", not missed(goals))
        return missed(goals)

    def test_it_takes_no_more_than_either_tool(self):
        self.assertEqual(set(), self.missed("list", run(), run(), run()))
        more = run(1.01, 1.01)
        goal = session_cold.goal
        self.assertEqual({goal("wall time", "lftp")}, self.missed("list", run(1.01), run(), more))
        self.assertEqual({goal("CPU time", "lftp")}, self.missed("list", run(1, 1.01), run(), more))
        self.assertEqual({goal("wall time", "curl")}, self.missed("list", run(1.01), more, run()))
        self.assertEqual({goal("CPU time", "curl")}, self.missed("list", run(1, 1.01), more, run()))

    def test_three_take_half_of_lftps_wall_time(self):
        for operation in ("test", "rename", "delete"):
            self.assertEqual(set(), self.missed(operation, run(0.5), run(), run()))
            self.assertEqual({session_cold.HALF_GOAL}, self.missed(operation, run(0.51), run(), run()))
        for operation in ("list", "download", "upload"):
            self.assertEqual(set(), self.missed(operation, run(0.51), run(), run()))


class AFurtherCall(unittest.TestCase):
    def row(self, operation, cpu):
        goals = Goals()
        work = Work(operation, operation, "path")
        with (
            mock.patch.object(session_warm.session_works, "repeatable", lambda server: [work]),
            mock.patch.object(session_warm, "program"),
            mock.patch.object(session_warm.daemons, "Distant"),
            mock.patch.object(session_warm, "_far_away"),
        ):
            recorder = Recorder({"1": run(1, 0.5), "many": run(3, 0.5 + cpu)})
            table = session_warm.suite([SERVER], recorder, goals, SimpleNamespace(warm_rounds=1, warm_calls=200))[0]
        return table.rows[0], missed(goals)

    def test_it_is_what_the_others_add(self):
        row, _ = self.row("list", 0.4)
        self.assertEqual((10, 2), (row[3].median, row[4].median))

    def test_rename_and_size_take_less_than_a_millisecond(self):
        for operation in ("rename", "size"):
            self.assertEqual(("met", set()), (self.row(operation, 0.2)[0][-1], self.row(operation, 0.2)[1]))
            self.assertEqual({session_warm.GOAL}, self.row(operation, 0.202)[1])
        self.assertEqual(("–", set()), (self.row("list", 0.4)[0][-1], self.row("list", 0.4)[1]))


class AFurtherCallFarAway(unittest.TestCase):
    def row(self, seconds):
        goals = Goals()
        work = Work("list", "list", "path")
        with (
            mock.patch.object(session_warm.session_works, "repeatable", lambda server: [work]),
            mock.patch.object(session_warm, "program"),
        ):
            recorder = Recorder({"1": run(1), "many": run(1 + 10 * seconds)})
            server = SimpleNamespace(name="test server", DELAY_MS=50)
            effort = SimpleNamespace(far_calls=10, warm_rounds=6)
            table = session_warm._far_away(server, recorder, goals, effort)
        return table.rows[0][3:], missed(goals)

    def test_it_takes_no_more_than_four_round_trips(self):
        self.assertEqual(([2, "met"], set()), self.row(0.097))
        self.assertEqual(([4, "met"], set()), self.row(0.224))
        self.assertEqual(([5, "NOT MET"], {session_warm.TRIPS_GOAL}), self.row(0.226))


class ManyFiles(unittest.TestCase):
    def rows(self, session=(1, 1), lftp=(10, 4), rclone=4, memory=(1, 3)):
        """With the walls of one and of four connections."""
        runs = {f"session {number}": run(wall, peak=memory[0]) for number, wall in zip((1, 4), session)}
        runs |= {f"lftp {number}": run(wall) for number, wall in zip((1, 4), lftp)}
        runs["rclone 4"] = run(rclone, peak=memory[1])
        goals = Goals()
        with (
            mock.patch.object(session_folders, "Folders"),
            mock.patch.object(session_folders, "_measure", lambda *_: runs),
        ):
            effort = SimpleNamespace(folder_files=1000, folder_rounds=1)
            rows = session_folders.suite([SERVER], None, goals, effort)[0].rows
        return rows, missed(goals)

    def test_each_rate_is_told_for_each_way_and_both(self):
        rows, _ = self.rows(session=(2, 1))
        self.assertEqual(["upload", "download", "both ways"], [row[1] for row in rows[:3]])
        self.assertEqual(["500", "100", 5.0, "250", 2.0], [getattr(cell, "median", cell) for cell in rows[0][3:8]])
        self.assertEqual(["500", "100"], rows[2][3:5])
        self.assertEqual(["–", "–"], [row[-1] for row in rows[:2]])

    def test_a_session_is_so_many_times_as_fast(self):
        self.assertEqual(set(), self.rows()[1])
        self.assertEqual({session_folders.lftp_goal(1)}, self.rows(lftp=(9.9, 4))[1])
        self.assertEqual({session_folders.lftp_goal(4)}, self.rows(lftp=(10, 3.9))[1])
        self.assertEqual({session_folders.RCLONE_GOAL}, self.rows(rclone=3.9)[1])

    def test_it_needs_a_third_of_rclones_memory(self):
        self.assertEqual({session_folders.MEMORY_GOAL}, self.rows(memory=(1.01, 3))[1])

    def test_one_way_does_not_make_up_for_memory_of_the_other(self):
        ways = [[run(peak=3)[0]], [run(peak=5)[0]]]
        self.assertEqual([5], session_folders._greatest(ways))
        self.assertEqual([2.0], session_folders._added(ways))


class FoldersAreLookedAt(unittest.TestCase):
    def setUp(self):
        folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        (folder / "served").mkdir()
        server = SimpleNamespace(folder=folder, served=folder / "served")
        server.make_writable_folder = lambda name: (server.served / name).mkdir(exist_ok=True) or server.served / name
        self.folders = session_folders.Folders(server, 3)
        self.target = folder / "target"
        self.folders.aim(self.target)

    def test_what_is_whole_is_fine(self):
        self.folders.fill(self.target)
        self.folders.check()
        self.folders.aim(self.target)
        self.assertEqual([], list(self.target.iterdir()))

    def test_where_a_client_may_fail_it_is_only_told(self):
        self.folders.fill(self.target)
        self.assertTrue(self.folders.are_whole())
        self.folders.aim(self.target)
        self.assertFalse(self.folders.are_whole())
        self.folders.check()

    def test_a_file_that_is_missing_ends_the_benchmark(self):
        self.folders.fill(self.target)
        next(self.target.iterdir()).unlink()
        self.assertRaisesRegex(RuntimeError, "target holds 2 files of 40000 bytes", self.folders.aim, self.target)

    def test_so_does_one_that_is_cut_short(self):
        self.folders.fill(self.target)
        next(self.target.iterdir()).write_bytes(b"short")
        self.assertRaisesRegex(RuntimeError, "target holds 3 files of 40005 bytes", self.folders.check)


class LargeFiles(unittest.TestCase):
    def missed(self, session, plain, lftp):
        goals = Goals()

        def work(server, name, size):
            return Work(f"upload {name}", "upload", "path", size=size)

        with (
            mock.patch.multiple(session_large.session_works, upload=work, download=work),
            mock.patch.object(session_large.session_tools, "lftp"),
            mock.patch.object(session_large, "program"),
        ):
            recorder = Recorder({"session": session, "plain": plain, "lftp": lftp, "openssl": run()})
            effort = SimpleNamespace(large_size=1 << 30, large_rounds=1)
            row = session_large.suite([SERVER], recorder, goals, effort)[0].rows[0]
        self.assertEqual("1024" if session[0].wall == 1 else "1003", row[3])
        self.assertEqual(row[-1] == "met", not missed(goals))
        return missed(goals)

    def test_they_take_two_percent_more_than_the_plain_program_at_most(self):
        self.assertEqual(set(), self.missed(run(1, 1.02), run(), run(1, 1.02)))
        self.assertEqual({session_large.PLAIN_GOALS["wall"]}, self.missed(run(1.021), run(), run()))
        self.assertEqual({session_large.PLAIN_GOALS["cpu"]}, self.missed(run(1, 1.021), run(), run(1, 1.03)))

    def test_they_take_no_more_cpu_time_than_lftp(self):
        self.assertEqual({session_large.LFTP_GOAL}, self.missed(run(1, 1.01), run(), run()))


class Quiet(unittest.TestCase):
    def missed(self, busy=0.01, each=300, flat=1024):
        goals = Goals()
        wait = {"short": run(1, 0.5), "long": run(11, 0.5 + 10 * busy)}
        kept = {"1": run(peak=10000), "many": run(peak=10000 + 2 * each)}
        sizes = [{"session": run(peak=peak)} for peak in (5000, 5000, 5000 + flat, 5000)]
        with (
            mock.patch.object(session_quiet.daemons, "Stalling", lambda build: contextlib.nullcontext(mock.Mock())),
            mock.patch.object(session_quiet, "_prepare_kept"),
            mock.patch.object(session_quiet, "program"),
            mock.patch.multiple(
                session_quiet.session_works,
                download=lambda server, name, size: Work(name, "download", "path"),
                upload=lambda server, name, size: Work(name, "upload", "path"),
            ),
        ):
            effort = SimpleNamespace(
                quiet_rounds=1, wait_seconds=10, kept_connections=3, large_size=2, session_sizes=[1, 2]
            )
            session_quiet.suite([SERVER], Recorder([wait, wait, kept, *sizes]), goals, effort)
        return missed(goals)

    def test_waiting_takes_less_than_one_percent_of_a_processor(self):
        self.assertEqual(set(), self.missed())
        self.assertEqual({session_quiet.CPU_GOAL}, self.missed(busy=0.0101))

    def test_a_kept_connection_takes_little(self):
        self.assertEqual({session_quiet.KEPT_GOAL}, self.missed(each=301))

    def test_memory_is_flat_within_a_mib(self):
        self.assertEqual({session_quiet.FLAT_GOAL}, self.missed(flat=1025))


if __name__ == "__main__":
    unittest.main()
