"""Suite: what a session takes while it waits, and in memory."""

import daemons
import session_works
import sizes
from clients import Work, program
from figures import AMOUNT, Spread, per_unit
from report import Table
from works import size_name

SUITE = "session, quiet"
SHORT_WAIT = 1
SHARE = 0.01
PERCENT = "{:.3f} % ({:.3f}–{:.3f})"
CPU_GOAL = "less than 1 % of a processor while nothing moves"
KEPT_KIB = 300
KEPT_GOAL = "less than 300 KiB for each kept connection"
FLAT_GOAL = "a session's peak memory flat from the smallest file to the largest, within 1 MiB"


def suite(servers, recorder, goals, effort):
    waiting = Table(
        "While nothing moves",
        f"CPU time of the client, as a share of a processor: a run that waits for {effort.wait_seconds} s longer than "
        "another, beside that one: median (least–greatest).",
        ["what", "rounds", "share of a processor", "goal"],
    )
    with daemons.Stalling(servers[0].build) as stalling:
        waiting.rows.append(_stall(stalling, recorder, goals, effort))
    _prepare_kept(servers)
    waiting.rows.append(_idle(servers[0], recorder, goals, effort))
    kept = Table(
        "Memory of kept connections",
        f"Peak of a process that keeps {effort.kept_connections} connections, less that of one with one connection, "
        "for each further one, in KiB: median (least–greatest). Each has downloaded and uploaded.",
        ["server", "rounds", "KiB for each", "goal"],
    )
    for server in servers:
        kept.rows.append(_kept(server, recorder, goals, effort))
    return [waiting, kept, _sizes(servers[0], recorder, goals, effort)]


def _prepare_kept(servers):
    for server in servers:
        server.make_writable_folder("kept")
        server.make_file("kept/file.bak", session_works.SMALL)


def _stall(server, recorder, goals, effort):
    server.make_file("stalls.bak", 1 << 20)
    work = Work("a stalled download", "stall", "stalls.bak")
    return _waiting_row(server, work, recorder, goals, effort)


def _idle(server, recorder, goals, effort):
    work = Work("an idle kept connection", "keep", "kept/file.bak")
    return _waiting_row(server, work, recorder, goals, effort)


def _waiting_row(server, work, recorder, goals, effort):
    seconds = {"short": SHORT_WAIT, "long": SHORT_WAIT + effort.wait_seconds}
    pair = {name: program(server, "session", work, calls=calls) for name, calls in seconds.items()}
    runs = recorder.alternate(SUITE, work.name, effort.quiet_rounds, pair)
    shares = [per_unit(short.cpu, long.cpu, long.wall - short.wall) for short, long in zip(runs["short"], runs["long"])]
    verdict = goals.judge_spread(CPU_GOAL, work.name, Spread.of(shares), greatest=SHARE)
    return [work.name, effort.quiet_rounds, Spread.of((100 * share for share in shares), PERCENT), verdict]


def _kept(server, recorder, goals, effort):
    work = Work("kept connections", "keep", "kept/file.bak")
    pair = {
        name: program(server, "session", work, threads=connections, calls=0)
        for name, connections in (("1", 1), ("many", effort.kept_connections))
    }
    runs = recorder.alternate(SUITE, f"{server.name}: {work.name}", effort.quiet_rounds, pair)
    pairs = zip(runs["1"], runs["many"])
    each = Spread.of((per_unit(one.peak, many.peak, effort.kept_connections - 1) for one, many in pairs), AMOUNT)
    return [server.name, effort.quiet_rounds, each, goals.judge_spread(KEPT_GOAL, server.name, each, greatest=KEPT_KIB)]


def _sizes(server, recorder, goals, effort):
    table = Table(
        "A session's memory against file size",
        f"Peak memory in KiB: median (least–greatest), with {server.name}. Downloads are discarded; the largest files "
        "are not uploaded, for want of room.",
        ["file", "rounds", "download", "upload"],
    )
    peaks = {"download": [], "upload": []}
    for size in effort.session_sizes:
        cells = []
        for make in (session_works.download, session_works.upload):
            if make is session_works.upload and size > effort.large_size:
                cells.append("–")
                continue
            work = make(server, size_name(size), size)
            runs = recorder.alternate(
                SUITE, work.name, effort.quiet_rounds, {"session": program(server, "session", work)}
            )["session"]
            work.before()
            peaks[work.operation].append([run.peak for run in runs])
            cells.append(Spread.of(peaks[work.operation][-1], AMOUNT))
        table.rows.append([size_name(size), effort.quiet_rounds, *cells])
    for operation, of_operation in peaks.items():
        sizes.judge_flat(goals, FLAT_GOAL, f"{operation}: ", of_operation)
    return table
