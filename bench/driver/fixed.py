"""Suite: the fixed costs of a call, which the design has and not the code around libcurl."""

import dataclasses

import works
from clients import program
from figures import Spread
from report import Table

SUITE = "fixed costs"


def suite(server, recorder, goals, effort):
    table = Table(
        "Fixed costs of a call",
        "Differences in milliseconds between two runs of the bare program side by side: median (least–greatest).",
        ["cost", "with", "without", "wall time", "CPU time"],
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
        ("a download's size check, which logs in by itself", ("size check", "nothing"), {"with": bare(size)}),
        (
            "a connection for each call",
            ("2 listings, 2 connections", "2 listings, 1 connection"),
            {"with": bare(lists, calls=2), "without": bare(twice)},
        ),
    ]:
        runs = recorder.alternate(SUITE, cost, effort.small_rounds, pair)
        table.rows.append([cost, *names, *(_milliseconds(runs, what) for what in ("wall", "cpu"))])
    return [table]


def _milliseconds(runs, what):
    above = [getattr(run, what) for run in runs["with"]]
    below = [getattr(run, what) for run in runs.get("without", [])] or [0] * len(above)
    spread = Spread.of(1000 * (more - less) for more, less in zip(above, below))
    return f"{spread.median:.0f} ({spread.least:.0f}–{spread.greatest:.0f})"
