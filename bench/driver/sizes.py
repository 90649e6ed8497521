"""Suite: peak memory against the size of the file. It must not depend on it."""

import works
from beside_bare import MEMORY_GOAL, MEMORY_GOAL_KIB
from clients import program
from figures import AMOUNT, DIFFERENCE, Spread
from report import Table

SUITE = "memory"
FLAT_KIB = 1024
GOAL = "peak memory flat from the smallest file to the largest, within 1 MiB"


def suite(server, recorder, goals, effort):
    table = Table(
        "Memory against file size",
        "Peak memory of a download in KiB: median (least–greatest). The file takes no room on the server's side and "
        "is discarded on the library's.",
        ["file", "library", "bare", "library less bare"],
        plot="memory.svg",
    )
    peaks = {"library": [], "bare": []}
    for size in effort.memory_sizes:
        work = works.download(server, size)
        both = {name: program(server, name, work) for name in peaks}
        runs = recorder.alternate(SUITE, work.name, effort.memory_rounds, both)
        for name, found in peaks.items():
            found.append([run.peak for run in runs[name]])
        more = Spread.of((one.peak - other.peak for one, other in zip(runs["library"], runs["bare"])), DIFFERENCE)
        goals.judge_spread(MEMORY_GOAL, f"download {works.size_name(size)}", more, greatest=MEMORY_GOAL_KIB)
        table.rows.append([works.size_name(size), *(Spread.of(found[-1], AMOUNT) for found in peaks.values()), more])
    judge_flat(goals, GOAL, "", peaks["library"])
    return [table]


def judge_flat(goals, goal, whose, peaks):
    """`peaks` has those of each size, round by round: within a round they must be near one another."""
    apart = Spread.of((max(of_round) - min(of_round) for of_round in zip(*peaks)), AMOUNT)
    goals.judge_spread(goal, f"{whose}{apart.median:.0f} KiB apart", apart, greatest=FLAT_KIB)
