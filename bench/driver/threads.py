"""Suite: many calls at once, on as many threads, for the library and the bare program."""

import works
from clients import pair
from figures import Spread, per_unit, ratios
from report import Table

SUITE = "threads"
GOAL = "0.97 or more of the bare program's calls per second"


def suite(server, recorder, goals, effort):
    table = Table(
        "Many calls at once",
        "Calls per second, and the library's as a ratio to the bare program's: median (least–greatest). Goal: 0.97 or "
        "more. The trust store holds one certificate here, and libcurl's wait is taken out, so that threads meet in "
        "the library and not there.",
        ["work", "threads", "calls", "library", "bare", "ratio", "goal"],
        plot="threads.svg",
    )
    memory = Table(
        "Memory for a call",
        f"What a call takes while {effort.threads[-1]} run at once: the peak of the process less that of one with one "
        "thread, per further thread, in KiB; medians.",
        ["work", "library", "bare"],
    )
    for work in (works.listing(server, 1000), works.download(server, works.MIB)):
        measured = {threads: _measure(server, recorder, work, threads, effort) for threads in effort.threads}
        for threads, (calls, runs) in measured.items():
            table.rows.append(_row(goals, work, threads, calls, runs))
        memory.rows.append([work.name, *_memory_per_call(measured)])
    return [table, memory]


def _measure(server, recorder, work, threads, effort):
    calls = max(1, effort.calls_at_once // threads)
    both = pair(server, work, threads, calls, server.small_trust)
    runs = recorder.alternate(SUITE, f"{work.name}, {threads} threads", effort.thread_rounds, both)
    return threads * calls, runs


def _row(goals, work, threads, calls, runs):
    rates = {name: [calls / run.wall for run in of_one] for name, of_one in runs.items()}
    ratio = ratios(rates["library"], rates["bare"])
    verdict = goals.judge_spread(GOAL, f"{work.name} on {threads}", ratio, least=0.97)
    of_each = [f"{Spread.of(rates[name]).median:.1f}" for name in ("library", "bare")]
    return [work.name, threads, calls, *of_each, ratio, verdict]


def _memory_per_call(measured):
    for name in ("library", "bare"):
        peaks = {threads: Spread.of(run.peak for run in runs[name]).median for threads, (_, runs) in measured.items()}
        few, many = min(peaks), max(peaks)
        yield f"{per_unit(peaks[few], peaks[many], many - few):.0f}"
