"""Suite: the fixed costs of a call, which the design has and not the code around libcurl, and what removes them."""

import dataclasses
import pathlib
import tempfile
from collections.abc import Callable

import serving
import session_works
import user_clients
import users
import works
from clients import Work, program
from figures import DIFFERENCE, Spread
from report import Table

SUITE = "fixed costs"


@dataclasses.dataclass(frozen=True)
class Cost:
    """What a cost is, the run with it and the run without it, and what a host does about it."""

    name: str
    names: tuple
    with_it: Callable
    without: Callable
    remedy: str


def suite(build, recorder, goals, effort):
    table = Table(
        "Fixed costs of a call, and their remedies",
        "Differences between two runs side by side, of the bare program where nothing else is said: median (least to "
        "greatest), in milliseconds and KiB. What comes by chance has two values and no middle: so many of the runs "
        "with it, and without it, idled for more than a tenth of a second.",
        ["cost", "with", "without", "wall time", "idle with", "idle without", "CPU time", "peak memory", "remedy"],
    )
    with serving.Server(build) as server, tempfile.TemporaryDirectory(prefix="sftpclient-bench-") as disk:
        for cost in [*_costs(server), _wait_of_the_library(server), _sync(server, pathlib.Path(disk))]:
            pair = {"with": cost.with_it, "without": cost.without}
            runs = recorder.alternate(SUITE, cost.name, effort.fixed_rounds, pair)
            table.rows.append(_row(cost, runs))
    return [table]


def _costs(server):
    lists = works.listing(server, 1)
    size = dataclasses.replace(works.download(server, works.MIB), operation="size")
    twice = dataclasses.replace(lists, operation="list-twice")

    def bare(work, **settings):
        return program(server, "bare", work, **settings)

    return [
        Cost(
            "the machine's trust store, for each TLS connection",
            ("with it", "one certificate"),
            bare(size),
            bare(size, trust=server.small_trust),
            "a session, which reads the CA of the request alone",
        ),
        Cost(
            "libcurl's wait before a data connection",
            ("easy interface", "multi interface"),
            bare(lists),
            bare(lists, polled=True),
            "a session",
        ),
        Cost(
            "a download's size check, which logs in by itself",
            ("size check", "nothing"),
            bare(size),
            bare(size, calls=0),
            "a session, which asks on the same connection",
        ),
        Cost(
            "a connection for each call",
            ("2 listings, 2 connections", "2 listings, 1 connection"),
            bare(lists, calls=2),
            bare(twice),
            "a session, which keeps it",
        ),
    ]


def _wait_of_the_library(server):
    lists = program(server, "library", works.listing(server, 1))
    return Cost(
        "the same wait, in a listing by SFtpClient",
        ("the installed libcurl", users.NEWER_LIBCURL),
        lists,
        user_clients.with_library(lists, users.newer_libcurl()),
        "the libcurl of Debian's backports",
    )


def _sync(server, disk):
    server.make_file("down.bak", session_works.SMALL)
    download = program(server, "session", Work("download", "download", "down.bak", local=str(disk / "got.bak")))
    return Cost(
        f"fsync of a session's download, in {disk.parent}",
        ("syncDownload", "without it"),
        download,
        user_clients.with_environment(download, BENCH_UNSYNCED="1"),
        "syncDownload = false, and sync() after the last of many files",
    )


def _row(cost, runs):
    idle = [f"{_idle(runs[name])} of {len(runs[name])}" for name in ("with", "without")]
    wall, cpu, peak = (_difference(runs, what, factor) for what, factor in (("wall", 1000), ("cpu", 1000), ("peak", 1)))
    return [cost.name, *cost.names, wall, *idle, cpu, peak, cost.remedy]


def _difference(runs, what, factor):
    pairs = zip(runs["with"], runs["without"])
    return Spread.of((factor * (getattr(more, what) - getattr(less, what)) for more, less in pairs), DIFFERENCE)


def _idle(runs):
    return sum(run.wall - run.cpu > 0.1 for run in runs)
