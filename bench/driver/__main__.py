"""usage: driver BUILD [quick|keep] [users|core|sessions|command]

Measures what users compare, the library, sessions and the command, or some of these, and writes tables and plots into a
folder for each below build/bench.
A part that is measured alone moves as many and as large files as its goals name. "quick" makes few rounds with small
files, to try it out, and writes into build/bench/quick; "keep" measures nothing and puts the last full runs into
docs/performance.md.
"""

import contextlib
import csv
import dataclasses
import os
import pathlib
import shutil
import sys

import beside_bare
import beside_tools
import command_trees
import counts
import daemons
import fixed
import machine
import micro
import plots
import report
import serving
import session_cold
import session_folders
import session_large
import session_quiet
import session_warm
import sizes
import threads
import user_folders
import user_large
import user_limits
import user_operations
from effort import ALONE, FULL, QUICK
from figures import Goals
from measuring import Recorder

TOP = pathlib.Path(__file__).resolve().parents[2]
RESULTS = TOP / "build/bench"
DOCUMENT = TOP / "docs/performance.md"
PLOTS = TOP / "docs/performance"


@contextlib.contextmanager
def own_server(build):
    # A server for each suite, so that none inherits another's files.
    with serving.Server(build) as server:
        yield server


@contextlib.contextmanager
def own_servers(build):
    # These suites start a server for each condition.
    yield build


@dataclasses.dataclass(frozen=True)
class Part:
    """What is measured together: suites, each with the processors for what it starts, and their servers."""

    name: str
    suites: dict
    serve: contextlib.AbstractContextManager
    draw: object = None


PARTS = {
    "users": Part(
        "users",
        {
            user_operations: machine.everywhere,
            user_large: machine.everywhere,
            user_folders: machine.everywhere,
            fixed: machine.everywhere,
            user_limits: machine.everywhere,
        },
        own_servers,
    ),
    "core": Part(
        "core",
        {
            counts: machine.everywhere,
            beside_bare: machine.together,
            beside_tools: machine.apart,
            sizes: machine.apart,
            threads: machine.everywhere,
            micro: machine.everywhere,
        },
        own_server,
        plots.draw_all,
    ),
    "sessions": Part(
        "sessions",
        {
            session_cold: machine.apart,
            session_warm: machine.apart,
            session_folders: machine.everywhere,
            session_large: machine.together,
            session_quiet: machine.apart,
        },
        daemons.both,
    ),
    "command": Part("command", {command_trees: machine.everywhere}, daemons.all_three),
}


def measure(part, build, effort, recorder):
    """All suites of a part. Gives their tables."""
    goals = Goals()
    tables = []
    for suite, placed in part.suites.items():
        client_on, server_on = placed()
        # What is started from here on runs where this process may.
        os.sched_setaffinity(0, server_on)
        with part.serve(build) as served:
            os.sched_setaffinity(0, client_on)
            tables += suite.suite(served, recorder, goals, effort)
    tables.insert(0, report.Table(f"Goals ({part.name})", "", ["goal", "met", "undecided", "not met by"], goals.summary()))
    return tables


def write_runs(recorder, results):
    shutil.rmtree(results, ignore_errors=True)
    results.mkdir(parents=True)
    with open(results / "runs.csv", "w", newline="", encoding="utf-8") as file:
        csv.writer(file, lineterminator="\n").writerows([recorder.HEAD, *recorder.rows])


def write(tables, recorder, results, draw):
    (results / "tables.md").write_text("\n".join(map(report.markdown, tables)))
    (results / "tables.csv").write_text(report.comma_separated(tables))
    if draw:
        (results / PLOTS.name).mkdir()
        draw(recorder, tables, results / PLOTS.name)


def keep(names):
    kept = [name for name in names if (RESULTS / name / "tables.md").exists()]
    if not kept:
        sys.exit("There is no full run to keep: scripts/bench makes one.")
    for name in kept:
        tables = (RESULTS / name / "tables.md").read_text()
        DOCUMENT.write_text(report.put_between_marks(DOCUMENT.read_text(), tables, name))
        PLOTS.mkdir(exist_ok=True)
        for plot in (RESULTS / name / PLOTS.name).glob("*.svg"):
            shutil.copy(plot, PLOTS)


def run(name, build, mode):
    """Measures one part and writes what came of it."""
    effort, results, title = {
        "full": (FULL, RESULTS / name, f"The machine ({name})"),
        "alone": (ALONE, RESULTS / name, f"The machine ({name})"),
        "quick": (QUICK, RESULTS / "quick" / name, f"The machine ({name}), for a quick run"),
    }[mode]
    described = machine.describe(machine.load(), serving.place(), serving.BUNDLE)
    about = report.Table(title, "", ["what", "which"], described)
    recorder = Recorder(build, lambda text: print(text, file=sys.stderr, flush=True))
    try:
        tables = [about, *measure(PARTS[name], build, effort, recorder)]
    finally:
        # Also what a failure leaves; but one before the first run leaves the last benchmark's.
        if recorder.rows:
            write_runs(recorder, results)
    print("\n".join(map(report.terminal, tables)))
    write(tables, recorder, results, PARTS[name].draw)
    print(f"\nTables and plots are in {results}.")


def main(build, words):
    names = [word for word in words if word in PARTS] or list(PARTS)
    if "keep" in words:
        keep(names)
        return
    if names != ["core"] and os.geteuid() != 0:
        sys.exit("All but the library alone is measured with daemons that need root: run this as root, or: "
                 "scripts/bench core")
    machine.allow_many_files()
    mode = "quick" if "quick" in words else "alone" if len(names) == 1 else "full"
    for name in names:
        run(name, build, mode)


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]), sys.argv[2:])
