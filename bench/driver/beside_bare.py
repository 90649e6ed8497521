"""Suite: each operation, alone in a process, for the library and the bare program by turns."""

import works
from clients import pair
from figures import DIFFERENCE, MET, Spread, ratios
from report import Table

SUITE = "pairs"
LARGE = 64 * works.MIB
# The peak of a process this small goes up and down by the page.
MEMORY_GOAL_KIB = 2048
MEMORY_GOAL = "peak memory within 2 MiB of the bare program"
TIME_GOALS = {
    "wall": "wall time within 1 % of the bare program, 64 MiB and more",
    "cpu": "CPU time within 1 % of the bare program, 64 MiB and more",
}


def suite(server, recorder, goals, effort):
    table = Table(
        "Beside the bare program",
        "Ratios of the library's runs to the bare program's, pair by pair: median (least–greatest). libcurl's wait is "
        "taken out of both, and they share one processor with the server. Goals: wall and CPU time 0.99 to 1.01 where "
        "64 MiB or more are moved, peak memory within 2 MiB at any size. Peak memory is in KiB more. System time has "
        "no ratio where the clock's tick took it for zero in any run of the bare program.",
        ["operation", "pairs", "wall time", "CPU time", "user time", "system time", "peak memory", "goals"],
    )
    for work, pairs in works.of_every_size(server, effort):
        runs = recorder.alternate(SUITE, work.name, pairs, pair(server, work))
        table.rows.append([work.name, pairs, *_compare(work, runs["library"], runs["bare"], goals)])
    return [table]


def _compare(work, library, bare, goals):
    compared = {what: ratios_of(library, bare, what) for what in ("wall", "cpu", "user", "system")}
    more = Spread.of((with_it.peak - without.peak for with_it, without in zip(library, bare)), DIFFERENCE)
    verdicts = {"memory": goals.judge_spread(MEMORY_GOAL, work.name, more, greatest=MEMORY_GOAL_KIB)}
    if work.size >= LARGE:
        for what, goal in TIME_GOALS.items():
            verdicts[what] = goals.judge_spread(goal, work.name, compared[what], 0.99, 1.01)
    others = [f"{what} {verdict}" for what, verdict in verdicts.items() if verdict != MET]
    return [*compared.values(), more, ", ".join(others) or MET]


def ratios_of(library, other, what):
    """The runs' ratios in one figure; none where the clock's tick took any of the other's for zero."""
    below = [getattr(run, what) for run in other]
    return ratios([getattr(run, what) for run in library], below) if all(below) else "–"
