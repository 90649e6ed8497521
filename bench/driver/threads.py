"""Suite: many calls at once, on as many threads, for the library and the bare program."""

import works
from clients import pair
from figures import AMOUNT, Spread, per_unit, ratios
from report import Table

SUITE = "threads"
GOAL = "0.97 or more of the bare program's calls per second"


def suite(server, recorder, goals, effort):
    table = Table(
        "Many calls at once",
        "Calls per second, and the library's as a ratio to the bare program's: median (least–greatest). Goal: 0.97 or "
        "more. The trust store holds one certificate here, and libcurl's wait is taken out, so that threads meet in "
        "the library and not there; in its place each waiting thread wakes every millisecond, which many threads pay "
        "in CPU time. The server shares the processors, so the ratio of the clients' CPU time stands beside.",
        ["work", "threads", "calls", "library", "bare", "ratio", "CPU time", "goal"],
        plot="threads.svg",
    )
    memory = Table(
        "Memory for a call",
        f"What a call takes while {effort.threads[-1]} run at once: the peak of the process less that of one with one "
        "thread, per further thread, in KiB, with a trust store of one certificate: median (least–greatest), and the "
        "ratio. A larger store comes on top, for as long as a connection is being made.",
        ["work", "library", "bare", "ratio"],
    )
    for work in (works.listing(server, 1000), works.download(server, works.MIB)):
        measured = {threads: _measure(server, recorder, work, threads, effort) for threads in effort.threads}
        for threads, (calls, runs) in measured.items():
            table.rows.append(_row(goals, work, threads, calls, runs))
        memory.rows.append([work.name, *_memory_per_call(measured)])
    return [table, memory]


def _measure(server, recorder, work, threads, effort):
    # More than one each, so that most of a run is calls, and not the process's start.
    calls = max(2, effort.calls_at_once // threads)
    both = pair(server, work, threads, calls, server.small_trust)
    runs = recorder.alternate(SUITE, f"{work.name}, {threads} threads", effort.thread_rounds, both)
    return threads * calls, runs


def _row(goals, work, threads, calls, runs):
    rates = {name: [calls / run.wall for run in of_one] for name, of_one in runs.items()}
    ratio = ratios(rates["library"], rates["bare"])
    cpu = ratios(*([run.cpu for run in runs[name]] for name in ("library", "bare")))
    verdict = goals.judge_spread(GOAL, f"{work.name} on {threads}", ratio, least=0.97)
    of_each = [f"{Spread.of(rates[name]).median:.1f}" for name in ("library", "bare")]
    return [work.name, threads, calls, *of_each, ratio, cpu, verdict]


def _memory_per_call(measured):
    few, many = min(measured), max(measured)

    def of(name):
        pairs = zip(measured[few][1][name], measured[many][1][name])
        return [per_unit(one.peak, all_of_them.peak, many - few) for one, all_of_them in pairs]

    return [Spread.of(of("library"), AMOUNT), Spread.of(of("bare"), AMOUNT), ratios(of("library"), of("bare"))]
