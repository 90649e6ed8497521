"""usage: driver BUILD [quick|keep]

Measures, and writes tables and plots into build/bench. "quick" makes few rounds with small files, to try it out, and
writes into build/bench/quick; "keep" measures nothing and puts the last full run into docs/performance.md.
"""

import csv
import dataclasses
import os
import pathlib
import shutil
import sys

import beside_bare
import beside_tools
import counts
import fixed
import machine
import micro
import plots
import report
import serving
import sizes
import threads
from figures import Goals
from measuring import Recorder
from works import GIB, MIB

TOP = pathlib.Path(__file__).resolve().parents[2]
RESULTS = TOP / "build/bench"
DOCUMENT = TOP / "docs/performance.md"
PLOTS = TOP / "docs/performance"


@dataclasses.dataclass(frozen=True)
class Effort:
    """How much is done of what. Sizes and numbers of names go with their pairs of runs."""

    sizes: dict
    names: dict
    small_pairs: int
    threads: list
    thread_rounds: int
    calls_at_once: int
    memory_sizes: list
    memory_rounds: int
    fixed_rounds: int
    count_size: int
    micro_repetitions: int


FULL = Effort(
    # The goals within 1 % need as many: on a virtual machine, two runs of the same easily differ by 5 %.
    sizes={MIB: 24, 64 * MIB: 200, GIB: 100},
    names={1: 24, 1000: 24, 100_000: 24},
    small_pairs=24,
    threads=[1, 2, 4, 8, 16, 32, 64, 128, 256],
    thread_rounds=40,
    calls_at_once=128,
    memory_sizes=[MIB, 16 * MIB, 256 * MIB, GIB, 10 * GIB],
    memory_rounds=5,
    fixed_rounds=24,
    count_size=64 * MIB,
    micro_repetitions=10,
)
QUICK = Effort(
    sizes={MIB: 4, 64 * MIB: 4},
    names={1: 4, 1000: 4},
    small_pairs=4,
    threads=[1, 4, 16],
    thread_rounds=3,
    calls_at_once=8,
    memory_sizes=[MIB, 16 * MIB, 256 * MIB],
    memory_rounds=1,
    fixed_rounds=4,
    count_size=4 * MIB,
    micro_repetitions=3,
)
# Each with the processors for what it starts.
SUITES = {
    counts: machine.everywhere,
    beside_bare: machine.together,
    beside_tools: machine.apart,
    sizes: machine.apart,
    threads: machine.everywhere,
    fixed: machine.apart,
    micro: machine.everywhere,
}


def measure(build, effort, recorder):
    """All suites. Gives their tables."""
    goals = Goals()
    tables = []
    for suite, placed in SUITES.items():
        client_on, server_on = placed()
        # What is started from here on runs where this process may.
        os.sched_setaffinity(0, server_on)
        # A server each, so that none inherits another's files.
        with serving.Server(build) as server:
            os.sched_setaffinity(0, client_on)
            tables += suite.suite(server, recorder, goals, effort)
    tables.insert(0, report.Table("Goals", "", ["goal", "met", "undecided", "not met by"], goals.summary()))
    return tables


def write_runs(recorder, results):
    shutil.rmtree(results, ignore_errors=True)
    results.mkdir(parents=True)
    with open(results / "runs.csv", "w", newline="", encoding="utf-8") as file:
        csv.writer(file, lineterminator="\n").writerows([recorder.HEAD, *recorder.rows])


def write(tables, recorder, results):
    (results / "tables.md").write_text("\n".join(map(report.markdown, tables)))
    (results / "tables.csv").write_text(report.comma_separated(tables))
    (results / PLOTS.name).mkdir()
    plots.draw_all(recorder, tables, results / PLOTS.name)


def keep():
    tables = RESULTS / "tables.md"
    if not tables.exists():
        sys.exit("There is no full run to keep: scripts/bench makes one.")
    DOCUMENT.write_text(report.put_between_marks(DOCUMENT.read_text(), tables.read_text()))
    PLOTS.mkdir(exist_ok=True)
    for plot in (RESULTS / PLOTS.name).glob("*.svg"):
        shutil.copy(plot, PLOTS)


def main(build, mode):
    if mode == "keep":
        keep()
        return
    machine.allow_many_files()
    effort, results, title = {
        "full": (FULL, RESULTS, "The machine"),
        "quick": (QUICK, RESULTS / "quick", "The machine, for a quick run"),
    }[mode]
    described = machine.describe(machine.load(), serving.place(), serving.BUNDLE)
    about = report.Table(title, "", ["what", "which"], described)
    recorder = Recorder(build, lambda text: print(text, file=sys.stderr, flush=True))
    try:
        tables = [about, *measure(build, effort, recorder)]
    finally:
        # Also what a failure leaves; but one before the first run leaves the last benchmark's.
        if recorder.rows:
            write_runs(recorder, results)
    print("\n".join(map(report.terminal, tables)))
    write(tables, recorder, results)
    print(f"\nTables and plots are in {results}.")


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]), sys.argv[2] if len(sys.argv) > 2 else "full")
