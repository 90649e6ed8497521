"""Suite: each operation, alone in a process, for the library, the bare program, curl and lftp."""

import dataclasses
from typing import ClassVar

import works
from clients import TOOLS, everyone, pair
from figures import DIFFERENCE, MET, Spread, ratios
from report import Table

MIB = works.MIB
SUITE = "operations"
PAIRS = "pairs"
# The peak of a process this small goes up and down by the page.
MEMORY_GOAL_KIB = 2048
MEMORY_GOAL = "peak memory within 2 MiB of the bare program"
LARGE = 64 * MIB
COMPARED = {"wall": "wall", "CPU": "cpu", "memory": "peak"}
CPU_GOAL = "less CPU time than lftp for 1 GiB down"
TIME_GOALS = {
    "wall": "wall time within 1 % of the bare program, 64 MiB and more",
    "cpu": "CPU time within 1 % of the bare program, 64 MiB and more",
}


def suite(server, recorder, goals, effort):
    pairs, measured = {}, {}
    for work, rounds in _work(server, effort):
        pairs[work] = recorder.alternate(PAIRS, work.name, rounds, pair(server, work))
        measured[work] = recorder.alternate(SUITE, work.name, _tool_rounds(rounds), everyone(server, work))
    return [_beside_bare(pairs, goals), _beside_tools(measured, goals), _absolute(measured)]


def _work(server, effort):
    for size, rounds in effort.sizes.items():
        yield works.download(server, size), rounds
        yield works.upload(server, size), rounds
        # The next one needs the room.
        (server.served / "uploaded.bak").unlink()
    for names, rounds in effort.names.items():
        yield works.listing(server, names), rounds
    for work in works.on_one_file(server):
        yield work, effort.small_rounds


def _tool_rounds(pairs):
    """The tools differ by more than the bare program does, so fewer runs show it."""
    return max(1, min(24, pairs // 4))


def _of(runs, what):
    return [getattr(run, what) for run in runs]


def _ratio(library, other, what):
    below = _of(other, what)
    return ratios(_of(library, what), below) if all(below) else "–"


def _beside_bare(measured, goals):
    table = Table(
        "Beside the bare program",
        "Ratios of the library's runs to the bare program's, pair by pair: median (least–greatest). libcurl's wait is "
        "taken out of both. Goals: wall and CPU time 0.99 to 1.01 where 64 MiB or more are moved, peak memory within "
        "2 MiB at any size. Peak memory is in KiB more. System time has no ratio where the clock's tick took it for "
        "zero.",
        ["operation", "pairs", "wall time", "CPU time", "user time", "system time", "peak memory", "goals"],
    )
    for work, runs in measured.items():
        library, bare = runs["library"], runs["bare"]
        compared = {what: _ratio(library, bare, what) for what in ("wall", "cpu", "user", "system")}
        more = Spread.of((with_it.peak - without.peak for with_it, without in zip(library, bare)), DIFFERENCE)
        verdicts = {"memory": goals.judge_spread(MEMORY_GOAL, work.name, more, greatest=MEMORY_GOAL_KIB)}
        if work.size >= LARGE:
            for what, goal in TIME_GOALS.items():
                verdicts[what] = goals.judge_spread(goal, work.name, compared[what], 0.99, 1.01)
        table.rows.append([work.name, len(bare), *compared.values(), more, _verdict(verdicts)])
    return table


def _verdict(verdicts):
    others = [f"{what} {verdict}" for what, verdict in verdicts.items() if verdict != MET]
    return ", ".join(others) or MET


def _beside_tools(measured, goals):
    table = Table(
        "Beside curl and lftp",
        "Ratios of the library's runs to the tool's in the same round: median (least–greatest). Below 1, the library "
        "takes less. libcurl's wait is in the library and in curl, not in lftp, and is most of lftp's lead in small "
        "calls. Only the library's download logs in twice.",
        ["operation", "rounds", *(f"{what}, to {tool}" for tool in TOOLS for what in COMPARED), "goal"],
    )
    for work, runs in measured.items():
        library = runs["library"]
        row = [work.name, len(library)]
        for tool in TOOLS:
            row += [_ratio(library, runs[tool], what) for what in COMPARED.values()]
        verdict = "–"
        if work.operation == "download" and work.size >= works.GIB:
            verdict = goals.judge_spread(CPU_GOAL, work.name, _ratio(library, runs["lftp"], "cpu"), greatest=1)
        table.rows.append([*row, verdict])
    return table


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
        wall, user, system, peak = (Spread.of(_of(runs, what)).median for what in ("wall", "user", "system", "peak"))
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
