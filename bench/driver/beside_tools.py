"""Suite: each operation, alone in a process, for the library, the bare program, curl and lftp by turns."""

import dataclasses
from typing import ClassVar

import works
from beside_bare import ratios_of
from clients import TOOLS, everyone
from figures import Spread
from report import Table

SUITE = "operations"
COMPARED = {"wall": "wall", "CPU": "cpu", "memory": "peak"}
CPU_GOAL = "less CPU time than lftp for 1 GiB down"


def suite(server, recorder, goals, effort):
    measured = {
        work: recorder.alternate(SUITE, work.name, _rounds(pairs), everyone(server, work))
        for work, pairs in works.of_every_size(server, effort)
    }
    return [_ratios(measured, goals), _absolute(measured)]


def _rounds(pairs):
    """No goal within 1 % hangs on the tools: the fewest that decide anything are enough."""
    return min(6, pairs)


def _ratios(measured, goals):
    table = Table(
        "Beside curl and lftp",
        "Ratios of the library's runs to the tool's in the same round: median (least–greatest). Below 1, the library "
        "takes less. libcurl's wait is in the library and in curl, not in lftp, and is more than all of lftp's lead in "
        "the time of small calls; its lead in CPU time is mostly the trust store. Only the library's download logs in "
        "twice.",
        ["operation", "rounds", *(f"{what}, to {tool}" for tool in TOOLS for what in COMPARED), "goal"],
    )
    for work, runs in measured.items():
        library = runs["library"]
        row = [work.name, len(library)]
        for tool in TOOLS:
            row += [ratios_of(library, runs[tool], what) for what in COMPARED.values()]
        verdict = "–"
        if work.operation == "download" and work.size >= works.GIB:
            verdict = goals.judge_spread(CPU_GOAL, work.name, ratios_of(library, runs["lftp"], "cpu"), greatest=1)
        table.rows.append([*row, verdict])
    return table


def _median(runs, what):
    return Spread.of(getattr(run, what) for run in runs).median


@dataclasses.dataclass(frozen=True)
class Took:
    """What the runs of one client took, each figure the median."""

    wall: float
    user: float
    system: float
    peak_mib: float
    FIGURES: ClassVar = ["wall s", "user s", "system s", "peak MiB"]

    @staticmethod
    def of(runs):
        wall, user, system, peak = (_median(runs, what) for what in ("wall", "user", "system", "peak"))
        return Took(wall, user, system, peak / 1024)

    def __str__(self):
        return f"{self.wall:.3f} / {self.user:.3f} / {self.system:.3f}, {self.peak_mib:.1f}"

    def cells(self):
        return [self.wall, self.user, self.system, self.peak_mib]


def _absolute(measured):
    clients = ["library", "bare", *TOOLS]
    table = Table(
        "What each took",
        "Medians of the rounds with all four, libcurl's wait included: wall time / user time / system time in seconds, "
        "and peak memory in MiB.",
        ["operation", *clients],
        plot="cpu.svg",
    )
    for work, runs in measured.items():
        table.rows.append([work.name, *(Took.of(runs[client]) for client in clients)])
    return table
