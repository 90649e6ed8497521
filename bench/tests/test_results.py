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

    def write(self, tables):
        driver.write_runs(self.recorder, self.results)
        driver.write(tables, self.recorder, self.results)

    def test_runs_tables_and_plots_are_written(self):
        self.write([MACHINE, THREADS, MEMORY])
        self.assertEqual(
            [
                "suite,work,client,round,wall s,user s,system s,peak KiB",
                "operations,rename,library,0,0.2,0.08,0.01,15900",
            ],
            (self.results / "runs.csv").read_text().splitlines()[:2],
        )
        self.assertTrue((self.results / "tables.md").read_text().startswith("### The machine\n\n| what | which |\n"))
        self.assertTrue((self.results / "tables.csv").read_text().startswith("The machine,what,which\n"))

    def test_the_plots_show_who_is_compared_in_what(self):
        self.write([MACHINE, THREADS, MEMORY])
        for plot, shown in {
            "cpu.svg": ["rename", "delete", "library", "bare", "curl", "lftp"],
            "threads.svg": ["list 7 names, library", "list 7 names, bare", "threads"],
            "memory.svg": ["1 MiB", "10 GiB", "library", "bare", "size of the file"],
        }.items():
            self.assertEqual([], [word for word in shown if word not in words(self.results / "performance" / plot)])

    def test_the_last_run_is_kept(self):
        self.document.write_text(f"above\n{report.BEGIN}\nold\n{report.END}\nbelow\n")
        self.write([MACHINE, THREADS, MEMORY])
        driver.keep()
        kept = self.document.read_text()
        self.assertTrue(kept.startswith(f"above\n{report.BEGIN}\n\n### The machine\n"))
        self.assertTrue(kept.endswith(f"(performance/memory.svg)\n\n{report.END}\nbelow\n"))
        self.assertEqual({"cpu.svg", "memory.svg", "threads.svg"}, {plot.name for plot in self.plots.iterdir()})

    def run_main(self, mode):
        """A benchmark without its measuring. Gives how much was to be measured."""
        efforts = []

        def measure(build, effort, recorder):
            efforts.append(effort)
            recorder.rows += self.recorder.rows
            return [THREADS, MEMORY]

        with mock.patch.object(driver, "measure", measure), contextlib.redirect_stdout(io.StringIO()):
            driver.main(None, mode)
        return efforts

    def test_a_full_run_is_there_to_keep(self):
        self.assertEqual([driver.FULL], self.run_main("full"))
        self.assertTrue((self.results / "tables.md").read_text().startswith("### The machine\n"))
        self.assertTrue((self.results / "performance" / "memory.svg").exists())

    def test_a_quick_run_leaves_the_full_one(self):
        self.run_main("full")
        full = (self.results / "tables.md").read_text()
        self.assertEqual([driver.QUICK], self.run_main("quick"))
        self.assertEqual(full, (self.results / "tables.md").read_text())
        self.assertTrue((self.results / "quick/tables.md").read_text().startswith("### The machine, for a quick run\n"))

    def test_without_a_full_run_there_is_nothing_to_keep(self):
        self.run_main("quick")
        self.assertRaisesRegex(SystemExit, "^There is no full run to keep", driver.keep)

    def test_a_run_that_fails_leaves_its_single_runs(self):
        def measure(build, effort, recorder):
            recorder.rows += self.recorder.rows
            raise RuntimeError("late")

        with mock.patch.object(driver, "measure", measure):
            self.assertRaisesRegex(RuntimeError, "late", driver.main, None, "full")
        self.assertEqual(["runs.csv"], [path.name for path in self.results.iterdir()])


if __name__ == "__main__":
    unittest.main()
