"""Suite: the fixed costs of a call, which the design has and not the code around libcurl."""

import dataclasses

import works
from clients import program
from figures import DIFFERENCE, Spread
from report import Table

SUITE = "fixed costs"


def suite(server, recorder, goals, effort):
    table = Table(
        "Fixed costs of a call",
        "Differences between two runs of the bare program side by side: median (least to greatest), in milliseconds "
        "and KiB. What comes by chance has two values and no middle: so many of the runs with it, and without it, "
        "idled for more than a tenth of a second.",
        ["cost", "with", "without", "wall time", "idle with", "idle without", "CPU time", "peak memory"],
    )
    lists = works.listing(server, 1)
    size = dataclasses.replace(works.download(server, works.MIB), operation="size")
    twice = dataclasses.replace(lists, operation="list-twice")

    def bare(work, **settings):
        return program(server, "bare", work, **settings)

    for cost, names, pair in [
        (
            "the machine's trust store, for each TLS connection",
            ("with it", "one certificate"),
            {"with": bare(size), "without": bare(size, trust=server.small_trust)},
        ),
        (
            "libcurl's wait before a data connection",
            ("easy interface", "multi interface"),
            {"with": bare(lists), "without": bare(lists, polled=True)},
        ),
        (
            "a download's size check, which logs in by itself",
            ("size check", "nothing"),
            {"with": bare(size), "without": bare(size, calls=0)},
        ),
        (
            "a connection for each call",
            ("2 listings, 2 connections", "2 listings, 1 connection"),
            {"with": bare(lists, calls=2), "without": bare(twice)},
        ),
    ]:
        runs = recorder.alternate(SUITE, cost, effort.fixed_rounds, pair)
        idle = [f"{_idle(runs[name])} of {len(runs[name])}" for name in ("with", "without")]
        differences = [_difference(runs, what, factor) for what, factor in (("wall", 1000), ("cpu", 1000), ("peak", 1))]
        table.rows.append([cost, *names, differences[0], *idle, *differences[1:]])
    return [table]


def _difference(runs, what, factor):
    pairs = zip(runs["with"], runs["without"])
    return Spread.of((factor * (getattr(more, what) - getattr(less, what)) for more, less in pairs), DIFFERENCE)


def _idle(runs):
    return sum(run.wall - run.cpu > 0.1 for run in runs)
