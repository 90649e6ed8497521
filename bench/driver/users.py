"""What a user compares: the same work by each client as it ships, under one condition after another."""

import dataclasses
import functools
import os
import pathlib
import subprocess

import daemons
import user_clients
from figures import MET, Spread, ratios
from measuring import Failure

UNPACKED = pathlib.Path(__file__).resolve().parents[2] / "build/roots/libcurl-8.14"
OURS = "SFtpSession"
CLIENTS = ["SFtpClient", OURS, "curl", "lftp", "rclone", "sftp"]
WITHIN = 1.02
DOES_GOAL = "SFtpSession does it"
TIME_GOAL = "SFtpSession in no more wall time than the best other client, within 2 %"
RATE_GOAL = "SFtpSession at no less than the best other client's rate, within 2 %"
NONE = "–"
TO_BEST = "time, to the best other"
HEAD = [*CLIENTS, TO_BEST, "goals"]
HOW_TO_READ = (
    f'Medians; "fails" has the exit status of the client\'s first failure, "{NONE}" is where there is no such client. '
    "The last figure is SFtpSession's wall time to that of the best other client in the same round: median "
    "(least–greatest); below 1, SFtpSession is faster."
)

RENAME, LIST, DOWNLOAD, UPLOAD = "rename", "list 100 names", "download 20 kB", "upload 20 kB"


@dataclasses.dataclass(frozen=True)
class Condition:
    """A server, and what is measured there. Each condition but the first differs in one thing from an earlier one."""

    name: str
    server: str
    small: tuple = (RENAME, LIST, DOWNLOAD, UPLOAD)
    newer_libcurl: bool = False
    large: bool = False
    folders: bool = False


NEWER_LIBCURL = "libcurl 8.14.1"
TRANSFERS = (LIST, DOWNLOAD, UPLOAD)
LITTLE = (LIST, UPLOAD)
CONDITIONS = [
    Condition("vsftpd", "vsftpd", large=True, folders=True),
    Condition("ProFTPD", "ProFTPD", TRANSFERS, large=True),
    Condition("Pure-FTPd", "Pure-FTPd", TRANSFERS),
    Condition("OpenSSH", daemons.SSH, TRANSFERS, large=True, folders=True),
    Condition("vsftpd, TLS 1.2", "vsftpd-1.2", LITTLE),
    Condition("vsftpd, TLS 1.3", "vsftpd-1.3", LITTLE),
    Condition("vsftpd, implicit TLS 1.2", "vsftpd-implicit", large=True, folders=True),
    Condition(f"vsftpd, {NEWER_LIBCURL}", "vsftpd", newer_libcurl=True),
    Condition(f"vsftpd, implicit TLS 1.2, {NEWER_LIBCURL}", "vsftpd-implicit", newer_libcurl=True),
    Condition("test server", daemons.OWN, LITTLE),
    Condition("test server, 50 ms away", daemons.FAR, LITTLE),
]


def serve(condition, build):
    return daemons.Daemon(build, condition.server)


@functools.cache
def newer_libcurl():
    """Where it is. The loader would take the installed one in its place without a word."""
    environment = {**os.environ, "LD_LIBRARY_PATH": str(UNPACKED)}
    told = subprocess.run(["curl", "--version"], env=environment, capture_output=True, text=True, check=True).stdout
    if NEWER_LIBCURL.replace(" ", "/") not in told.split("OpenSSL")[0]:
        raise RuntimeError(f"{UNPACKED} does not hold {NEWER_LIBCURL}: run scripts/libcurl-backports.")
    return UNPACKED


def clients_of(condition, clients):
    """Where another libcurl is asked for, only those that use it."""
    if not condition.newer_libcurl:
        return clients
    able = [name for name in clients if name in user_clients.WITH_LIBCURL]
    return {name: user_clients.with_library(clients[name], newer_libcurl()) for name in able}


def cells(seconds, goals, goal, subject, form, show):
    """A row's cells from what each client's units took, round by round: a unit is a call, a file or a megabyte.
    `show` makes of these seconds what the table shows."""
    shown = [_shown(seconds.get(name, NONE), form, show) for name in CLIENTS]
    ours = seconds[OURS]
    verdicts = {"does it": goals.judge(DOES_GOAL, subject, not isinstance(ours, Failure))}
    best = _best(taken for name, taken in seconds.items() if name != OURS)
    if isinstance(ours, Failure) or not best:
        to_best = NONE
    else:
        to_best = ratios(ours, best)
        verdicts["best other"] = goals.judge_spread(goal, subject, to_best, greatest=WITHIN)
    others = [f"{what} {verdict}" for what, verdict in verdicts.items() if verdict != MET]
    return [*shown, to_best, "; ".join(others) or MET]


def _best(of_others):
    """The least of each round, of those who can do it."""
    return [min(of_round) for of_round in zip(*(taken for taken in of_others if not isinstance(taken, Failure)))]


def _shown(taken, form, show):
    if taken == NONE or isinstance(taken, Failure):
        return taken
    return Spread.of((show(each) for each in taken), form)


def per_unit(runs, units):
    """What one of a run's units took; `units` maps the clients to how many they were given."""
    return {
        name: of_client if isinstance(of_client, Failure) else [run.wall / units[name] for run in of_client]
        for name, of_client in runs.items()
    }
