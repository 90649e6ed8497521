"""Suite: the instructions of the library's own code, counted by callgrind."""

import callgrind
import works
from clients import program
from figures import MET, MISSED, per_unit
from report import Table

LIBRARY_CALLS_GOAL = 20_000
SHARE_GOAL = 0.001


def suite(server, recorder, goals, effort):
    table = Table(
        "Instructions",
        "What libSFtpClient.so itself executes in one call, that as a share of all the process executes, and how many "
        "more the whole process executes than the bare program's: what is called for it, such as composing records, "
        'and loading it, which is all of the row "no call". The trust store holds one certificate. Goals: fewer than '
        "20,000 a call, less than 0.1 %.",
        ["operation", "own", "own per MiB", "share", "whole process", "more than bare", "goals"],
    )
    operations = works.of_each_operation(server)
    recorder.say("instructions: no call")
    table.rows.append(["no call", *_cells(*_count_both(server, operations[0], calls=0), "–"), "–"])
    for work in operations:
        recorder.say(f"instructions: {work.name}")
        own, bare = _count_both(server, work)
        few = goals.judge("fewer than 20,000 instructions of its own a call", work.name, own.own < LIBRARY_CALLS_GOAL)
        small = goals.judge("less than 0.1 % of the instructions its own", work.name, own.share < SHARE_GOAL)
        per_mib = f"{_per_mib(server, work, own, effort):.0f}" if work.size else "–"
        table.rows.append([work.name, *_cells(own, bare, per_mib), MET if few == small == MET else MISSED])
    return [table]


def _count_both(server, work, calls=1):
    programs = (program(server, name, work, calls=calls, trust=server.small_trust) for name in ("library", "bare"))
    return [callgrind.count(*prepare()) for prepare in programs]


def _cells(own, bare, per_mib):
    more = f"{own.total - bare.total:+,} ({own.total / bare.total - 1:+.3%})"
    return [f"{own.own:,}", per_mib, f"{own.share:.5%}", f"{own.total:,}", more]


def _per_mib(server, work, own, effort):
    make = {"download": works.download, "upload": works.upload}[work.operation]
    large = make(server, effort.count_size)
    of_large = callgrind.count(*program(server, "library", large, trust=server.small_trust)())
    return per_unit(own.own, of_large.own, (large.size - work.size) // works.MIB)
