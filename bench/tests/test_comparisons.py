"""Which figures are held to which goals, with made-up runs."""

import unittest
from types import SimpleNamespace
from unittest import mock

import beside_bare
import beside_tools
import callgrind
import counts
import fixed
import sizes
import threads
import works
from clients import Work
from figures import Goals
from measuring import Run

MIB = works.MIB


def runs(*walls, user=0.5, system=0.5, peak=1000):
    """The same again and again, as often as it takes to decide a goal."""
    return [Run(wall, user, system, peak) for wall in walls] * 6


class Recorder:
    """Gives the same runs for every work."""

    def __init__(self, **by_client):
        self.by_client = by_client

    def alternate(self, suite, work, rounds, clients):
        return {name: self.by_client[name] for name in clients}

    def say(self, text):
        pass


def measured(suite, size, recorder):
    """The rows of the suite's first table and the summary of the goals, for one download."""
    goals = Goals()
    work = [(Work("download", "download", "file", size=size), 3)]
    with mock.patch.object(works, "of_every_size", return_value=work), mock.patch.multiple(
        suite, **{"pair" if suite is beside_bare else "everyone": lambda server, work: recorder.by_client}
    ):
        tables = suite.suite(None, recorder, goals, None)
    return tables[0].rows, goals.summary()


class BesideTheBareProgram(unittest.TestCase):
    def verdict(self, library, bare, size=64 * MIB):
        rows, _ = measured(beside_bare, size, Recorder(library=library, bare=bare))
        return rows[0][-1]

    def test_within_one_percent(self):
        self.assertEqual("met", self.verdict(runs(0.99), runs(1)))
        self.assertEqual("met", self.verdict(runs(1.01), runs(1)))
        self.assertEqual("wall NOT MET", self.verdict(runs(0.98), runs(1)))
        self.assertEqual("cpu NOT MET", self.verdict(runs(1, user=0.52), runs(1)))

    def test_so_few_runs_that_differ_decide_nothing(self):
        self.assertEqual("wall undecided", self.verdict(runs(0.9, 1.02, 1.2), runs(1, 1, 1)))

    def test_a_small_file_has_no_goal_for_its_time(self):
        self.assertEqual("met", self.verdict(runs(2), runs(1), size=MIB))

    def test_memory_at_any_size(self):
        self.assertEqual("met", self.verdict(runs(1, peak=3048), runs(1), size=MIB))
        self.assertEqual("memory NOT MET", self.verdict(runs(1, peak=3049), runs(1), size=MIB))

    def test_the_row_has_each_ratio(self):
        rows, _ = measured(beside_bare, MIB, Recorder(library=runs(3, system=0.25), bare=runs(2, user=0.25)))
        self.assertEqual([1.5, 1.0, 2.0, 0.5, 0], [cell.median for cell in rows[0][2:7]])

    def test_what_was_too_short_to_see_has_no_ratio(self):
        rows, _ = measured(beside_bare, MIB, Recorder(library=runs(1), bare=runs(1, system=0)))
        self.assertEqual("–", rows[0][5])


class BesideTheTools(unittest.TestCase):
    def summary(self, library, lftp, size=works.GIB):
        recorder = Recorder(library=library, bare=runs(1), curl=runs(1), lftp=lftp)
        return measured(beside_tools, size, recorder)[1]

    def test_a_large_download_takes_no_more_cpu_time_than_lftp(self):
        self.assertEqual([[beside_tools.CPU_GOAL, "1 of 1", "–", "–"]], self.summary(runs(1), runs(1)))
        self.assertEqual(
            [[beside_tools.CPU_GOAL, "0 of 1", "–", "download"]], self.summary(runs(1), runs(1, user=0.49))
        )

    def test_no_more_rounds_are_made_than_decide_it(self):
        self.assertEqual([2, 6, 6], [beside_tools._rounds(pairs) for pairs in (2, 6, 40)])

    def test_a_smaller_one_has_no_goal(self):
        self.assertEqual([], self.summary(runs(1), runs(1), size=64 * MIB))


class MemoryAgainstSize(unittest.TestCase):
    def summary(self, small, large):
        """The summary of the goals where the library's peak is first the one, then the other."""
        goals, recorder, peaks = Goals(), Recorder(), iter((small, large))

        def alternate(*_):
            return {"library": runs(1, peak=next(peaks)), "bare": runs(1)}

        with (
            mock.patch.object(sizes, "program"),
            mock.patch.object(works, "download", return_value=Work("download", "download", "file")),
            mock.patch.object(recorder, "alternate", alternate),
        ):
            sizes.suite(None, recorder, goals, SimpleNamespace(memory_sizes=[MIB, 16 * MIB], memory_rounds=1))
        return [row[1:] for row in goals.summary()]

    def test_it_is_flat_within_a_mib(self):
        met = ["2 of 2", "–", "–"]
        self.assertEqual([met, ["1 of 1", "–", "–"]], self.summary(1000, 2024))
        self.assertEqual([met, ["0 of 1", "–", "1025 KiB apart"]], self.summary(1000, 2025))
        self.assertEqual([met, ["0 of 1", "–", "1025 KiB apart"]], self.summary(2025, 1000))

    def test_it_is_near_the_bare_programs_at_every_size(self):
        self.assertEqual(["1 of 2", "–", "download 16 MiB"], self.summary(3000, 3049)[0])


class ManyCallsAtOnce(unittest.TestCase):
    def rows(self, library, threads_at_once=2, calls_at_once=128):
        asked = []

        def alternate(suite, work, rounds, clients):
            return {"library": runs(*library, peak=1300), "bare": runs(2, peak=1200)}

        def pair(server, work, number, calls, trust):
            asked.append((number, calls, trust))

        recorder = Recorder()
        effort = SimpleNamespace(threads=[threads_at_once], thread_rounds=1, calls_at_once=calls_at_once)
        server = SimpleNamespace(small_trust="one certificate")
        with (
            mock.patch.object(recorder, "alternate", alternate),
            mock.patch.object(threads, "pair", pair),
            mock.patch.object(threads, "_memory_per_call", return_value=[]),
            mock.patch.object(works, "listing", return_value=Work("list", "list", "folder/")),
            mock.patch.object(works, "download", return_value=Work("download", "download", "file")),
        ):
            table = threads.suite(server, recorder, Goals(), effort)[0]
        return table.rows, asked

    def test_each_row_has_both_rates_and_their_ratio(self):
        row = self.rows([4])[0][0]
        self.assertEqual(["list", 2, 128, "32.0", "64.0"], row[:5])
        self.assertEqual((0.5, 1.0, "NOT MET"), (row[5].median, row[6].median, row[7]))

    def test_a_little_slower_is_as_good(self):
        self.assertEqual("met", self.rows([2 / 0.971])[0][0][-1])
        self.assertEqual("NOT MET", self.rows([2 / 0.969])[0][0][-1])

    def test_each_thread_makes_two_calls_or_more_with_a_small_trust_store(self):
        self.assertEqual([(2, 64, "one certificate")] * 2, self.rows([2])[1])
        self.assertEqual([(256, 2, "one certificate")] * 2, self.rows([2], threads_at_once=256)[1])

    def test_a_further_call_takes_what_a_further_thread_adds(self):
        measured = {1: (2, {"library": runs(1, peak=1000), "bare": runs(1, peak=900)})}
        measured[5] = (10, {"library": runs(1, peak=1800), "bare": runs(1, peak=1300)})
        self.assertEqual([200, 100, 2], [spread.median for spread in threads._memory_per_call(measured)])


class FixedCosts(unittest.TestCase):
    def test_each_is_a_difference_and_idle_runs_are_counted(self):
        costs = {
            "with": [Run(1.25, 0.5, 0.5, 1300), Run(1.0, 0.5, 0.5, 1300)],
            "without": [Run(1.0, 0.25, 0.5, 1000), Run(1.25, 0.25, 0.5, 1000)],
        }
        cost = fixed.Cost("cost", ("with it", "without it"), None, None, "remedy")
        name, with_it, without, wall, *idle, cpu, peak, remedy = fixed._row(cost, costs)
        self.assertEqual(("cost", "with it", "without it", "remedy"), (name, with_it, without, remedy))
        self.assertEqual((-250, 250), (wall.least, wall.greatest))
        self.assertEqual(["1 of 2", "2 of 2"], idle)
        self.assertEqual((250, 300), (cpu.median, peak.median))


class Instructions(unittest.TestCase):
    def rows(self, own, total=100_000_000):
        library = [callgrind.Count(692, 5000), callgrind.Count(own, total)]
        bare = [callgrind.Count(0, 4000), callgrind.Count(0, total - 1000)]
        told = [library[0], bare[0], library[1], bare[1]]
        work = [Work("rename", "rename", "folder/")]
        with (
            mock.patch.object(works, "of_each_operation", return_value=work),
            mock.patch.object(counts, "program", side_effect=lambda *_, **settings: lambda: (settings, None)) as program,
            mock.patch.object(callgrind, "count", side_effect=told),
        ):
            table = counts.suite(SimpleNamespace(small_trust="one"), Recorder(), Goals(), None)[0]
        self.assertEqual([0, 0, 1, 1], [call.kwargs["calls"] for call in program.call_args_list])
        self.assertEqual(["one"] * 4, [call.kwargs["trust"] for call in program.call_args_list])
        return table.rows

    def test_a_process_without_a_call_stands_first(self):
        self.assertEqual(["no call", "692", "–", "13.84000%", "5,000", "+1,000 (+25.000%)", "–"], self.rows(2818)[0])

    def test_each_operation_is_held_to_both_goals(self):
        self.assertEqual(
            ["rename", "2,818", "–", "0.00282%", "100,000,000", "+1,000 (+0.001%)", "met"], self.rows(2818)[1]
        )
        self.assertEqual("met", self.rows(19_999)[1][-1])
        self.assertEqual("NOT MET", self.rows(20_000)[1][-1])
        self.assertEqual("NOT MET", self.rows(2818, 2_818_000)[1][-1])


if __name__ == "__main__":
    unittest.main()
