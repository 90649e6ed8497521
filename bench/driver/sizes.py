"""Suite: peak memory against the size of the file. It must not depend on it."""

import works
from clients import program
from report import Table

SUITE = "memory"
FLAT_KIB = 1024
GOAL = "peak memory flat from the smallest file to the largest, within 1 MiB"


def suite(server, recorder, goals, effort):
    table = Table(
        "Memory against file size",
        "Peak memory of a download in KiB, one run each. The file takes no room on the server's side and is discarded "
        "on the library's.",
        ["file", "library", "bare"],
        plot="memory.svg",
    )
    peaks = {"library": [], "bare": []}
    for size in effort.memory_sizes:
        work = works.download(server, size)
        both = {name: program(server, name, work) for name in peaks}
        runs = recorder.alternate(SUITE, work.name, 1, both)
        for name, found in peaks.items():
            found.append(runs[name][0].peak)
        table.rows.append([works.size_name(size), *(found[-1] for found in peaks.values())])
    apart = max(peaks["library"]) - min(peaks["library"])
    goals.judge(GOAL, f"{apart} KiB apart", apart <= FLAT_KIB)
    return [table]
