"""What a run leaves in build/bench, and what is kept of it in the document."""

import contextlib
import io
import pathlib
import tempfile
import unittest
import xml.etree.ElementTree
from unittest import mock

import beside_tools
import plots
import report
from figures import AMOUNT, Spread
from loaded import driver
from measuring import Recorder

MACHINE = report.Table("The machine", "", ["what", "which"], [["day", "21 November 2026"]])
MEMORY = report.Table(
    "Memory against file size",
    "",
    ["file", "library", "bare"],
    [[size, Spread.of([15900], AMOUNT), Spread.of([15800], AMOUNT)] for size in ("1 MiB", "10 GiB")],
    plot="memory.svg",
)
THREADS = report.Table(
    "Many calls at once",
    "",
    ["work", "threads", "calls", "library", "bare"],
    [["list 7 names", threads, 128, "120.5", "125.4"] for threads in (1, 2)],
    plot="threads.svg",
)


def words(plot):
    """All that can be read in a plot. It fails where the plot is no XML, such as an unfinished one."""
    return [text for text in xml.etree.ElementTree.parse(plot).getroot().itertext() if text.strip()]


class Results(unittest.TestCase):
    def setUp(self):
        folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.results, self.document, self.plots = folder / "bench", folder / "performance.md", folder / "performance"
        for name, path in (("RESULTS", self.results), ("DOCUMENT", self.document), ("PLOTS", self.plots)):
            self.enterContext(mock.patch.object(driver, name, path))
        self.recorder = Recorder(None, None)
        self.recorder.rows = [
            [beside_tools.SUITE, work, client, 0, 0.2, 0.08, 0.01, 15900]
            for work in ("rename", "delete")
            for client in plots.COLOURS
        ]

    def write(self, tables, part="core"):
        results = self.results / part
        driver.write_runs(self.recorder, results)
        driver.write(tables, self.recorder, results, driver.PARTS[part].draw)

    def test_runs_tables_and_plots_are_written(self):
        self.write([MACHINE, THREADS, MEMORY])
        self.assertEqual(
            [
                "suite,work,client,round,wall s,user s,system s,peak KiB",
                "operations,rename,library,0,0.2,0.08,0.01,15900",
            ],
            (self.results / "core/runs.csv").read_text().splitlines()[:2],
        )
        self.assertTrue((self.results / "core/tables.md").read_text().startswith("### The machine\n\n| what | which |\n"))
        self.assertTrue((self.results / "core/tables.csv").read_text().startswith("The machine,what,which\n"))

    def test_the_plots_show_who_is_compared_in_what(self):
        self.write([MACHINE, THREADS, MEMORY])
        for plot, shown in {
            "cpu.svg": ["rename", "delete", "library", "bare", "curl", "lftp"],
            "threads.svg": ["list 7 names, library", "list 7 names, bare", "threads"],
            "memory.svg": ["1 MiB", "10 GiB", "library", "bare", "size of the file"],
        }.items():
            self.assertEqual([], [word for word in shown if word not in words(self.results / "core/performance" / plot)])

    def document_with_marks(self):
        marks = "\n".join(report.marks("core") + report.marks("sessions"))
        self.document.write_text(f"above\n{marks}\nbelow\n")

    def test_the_last_run_is_kept(self):
        self.document_with_marks()
        self.write([MACHINE, THREADS, MEMORY])
        driver.keep(["core", "sessions"])
        kept = self.document.read_text()
        begin, end = report.marks("core")
        self.assertTrue(kept.startswith(f"above\n{begin}\n\n### The machine\n"))
        self.assertIn(f"(performance/memory.svg)\n\n{end}\n", kept)
        self.assertTrue(kept.endswith("\n".join(report.marks("sessions")) + "\nbelow\n"))
        self.assertEqual({"cpu.svg", "memory.svg", "threads.svg"}, {plot.name for plot in self.plots.iterdir()})

    def test_sessions_are_kept_in_a_place_of_their_own(self):
        self.document_with_marks()
        self.write([MACHINE], "sessions")
        driver.keep(["core", "sessions"])
        begin, end = report.marks("sessions")
        core = "\n".join(report.marks("core"))
        kept = f"{begin}\n\n{report.markdown(MACHINE)}\n{end}"
        self.assertEqual(f"above\n{core}\n{kept}\nbelow\n", self.document.read_text())

    def run_main(self, *words, user=0):
        """A benchmark without its measuring. Gives what was to be measured, and how much of it."""
        measured = []

        def measure(part, build, effort, recorder):
            names = {id(each): name for name, each in driver.PARTS.items()}
            measured.append((names[id(part)], effort))
            recorder.rows += self.recorder.rows
            return [THREADS, MEMORY]

        with (
            mock.patch.object(driver, "measure", measure),
            mock.patch("os.geteuid", lambda: user),
            contextlib.redirect_stdout(io.StringIO()),
        ):
            driver.main(None, words)
        return measured

    def test_a_full_run_is_there_to_keep(self):
        self.assertEqual([(part, driver.FULL) for part in ("users", "core", "sessions", "command")], self.run_main())
        for part in driver.PARTS:
            text = (self.results / part / "tables.md").read_text()
            self.assertTrue(text.startswith(f"### The machine ({part})\n"), text)
        self.assertTrue((self.results / "core/performance/memory.svg").exists())

    def test_one_part_leaves_the_other(self):
        self.run_main()
        core = (self.results / "core/tables.md").stat().st_mtime_ns
        self.assertEqual([("sessions", driver.ALONE)], self.run_main("sessions"))
        self.assertEqual(core, (self.results / "core/tables.md").stat().st_mtime_ns)

    def test_a_quick_run_leaves_the_full_one(self):
        self.run_main()
        full = (self.results / "core/tables.md").read_text()
        self.assertEqual([("core", driver.QUICK)], self.run_main("quick", "core"))
        self.assertEqual(full, (self.results / "core/tables.md").read_text())
        quick = (self.results / "quick/core/tables.md").read_text()
        self.assertTrue(quick.startswith("### The machine (core), for a quick run\n"))

    def test_without_a_full_run_there_is_nothing_to_keep(self):
        self.run_main("quick")
        self.assertRaisesRegex(SystemExit, "^There is no full run to keep", driver.keep, ["core", "sessions"])

    def test_sessions_are_refused_to_users_who_cannot_start_daemons(self):
        for words in ([], ["quick"], ["users"], ["sessions"]):
            self.assertRaisesRegex(SystemExit, "need root.* scripts/bench core$", self.run_main, *words, user=1000)
        self.assertEqual([("core", driver.ALONE)], self.run_main("core", user=1000))

    def test_a_run_that_fails_leaves_its_single_runs(self):
        def measure(part, build, effort, recorder):
            recorder.rows += self.recorder.rows
            raise RuntimeError("late")

        with mock.patch.object(driver, "measure", measure):
            self.assertRaisesRegex(RuntimeError, "late", driver.main, None, ["core"])
        self.assertEqual(["runs.csv"], [path.name for path in (self.results / "core").iterdir()])


if __name__ == "__main__":
    unittest.main()
