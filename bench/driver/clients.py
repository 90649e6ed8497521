"""The same work for each client: the library, the bare program, curl and lftp."""

import dataclasses
import pathlib
from collections.abc import Callable

TOOLS = ["curl", "lftp"]
LFTP = [
    "set ssl:verify-certificate yes",
    "set ftp:ssl-protect-data yes",
    "set ftp:ssl-protect-list yes",
    "set net:max-retries 1",
    "set net:timeout 60",
    # It would give /dev/null the server's time, and put an older file aside.
    "set ftp:use-mdtm no",
    "set xfer:clobber yes",
    "set xfer:make-backup no",
]


@dataclasses.dataclass(frozen=True)
class Work:
    """One call. `path` is what its URL names; `local` and `remote` mean what they mean to the library.
    `done` looks whether it has had its effect."""

    name: str
    operation: str
    path: str
    local: str = "/dev/null"
    remote: str = "-"
    before: Callable = lambda: None
    size: int = 0
    done: Callable = lambda: True


def program(server, name, work, threads=1, calls=1, trust=None, polled=False):
    """A call of one of our two programs, made ready when it is wanted. `polled` takes out libcurl's wait before data
    connections."""
    environment = server.environment(trust)
    if polled:
        environment["BENCH_POLLED"] = "1"

    def prepare():
        work.before()
        words = [work.operation, server.url(work.path), work.local, work.remote]
        return [server.build / "bench" / f"bench-{name}", *words, threads, calls], environment

    return prepare


def curl(server, work):
    folder = pathlib.PurePosixPath("/") / work.path
    options = {
        "download": ["--output", work.local],
        "upload": ["--upload-file", work.local],
        "list": ["--list-only", "--output", work.local],
        "test": ["--output", "/dev/null"],
        "rename": ["--output", "/dev/null", "--quote", f"-rename {folder / work.remote} {folder / work.local}"],
        "delete": ["--output", "/dev/null", "--quote", f"-rm {folder / work.remote}"],
    }[work.operation]
    login = ["--disable", "--silent", "--cacert", server.machine_trust, "--user", f"backup:{server.password}"]
    return _prepared(work, ["curl", *login, *options, server.url(work.path)], server)


def lftp(server, work):
    folder = pathlib.PurePosixPath("/") / work.path
    does = {
        "test": f"ls /{work.path} > /dev/null",
        "rename": f"quote rename {folder / work.remote} {folder / work.local} > /dev/null",
    }.get(work.operation) or lftp_does(server, work)
    return _prepared(work, lftp_command(server, server.machine_trust, LFTP, does), server, lftp_login(server))


def lftp_does(server, work):
    """What lftp has one command for."""
    there = server.root + work.path
    target = server.discard() if work.local == "/dev/null" else work.local
    return {
        "download": f"get {there} -o {target}",
        "upload": f"put {work.local} -o {there}",
        "list": f"nlist {there} > {work.local}",
        "delete": f"rm {pathlib.PurePosixPath(there) / work.remote}",
    }[work.operation]


def lftp_command(server, trust, settings, does):
    login = f"open --user backup --env-password {server.url('')}"
    return ["lftp", "--norc", "-c", "; ".join([*settings, f"set ssl:ca-file {trust}", login, does])]


def lftp_login(server):
    return {"LFTP_PASSWORD": server.password}


def _prepared(work, command, server, environment=None):
    def prepare():
        work.before()
        return command, {**server.environment(), **(environment or {})}

    return prepare


def everyone(server, work):
    return {
        "bare": program(server, "bare", work),
        "library": program(server, "library", work),
        "curl": curl(server, work),
        "lftp": lftp(server, work),
    }


def pair(server, work, threads=1, calls=1, trust=None):
    """The library and the bare program, both without libcurl's wait, which comes by chance."""
    return {name: program(server, name, work, threads, calls, trust, polled=True) for name in ("bare", "library")}
