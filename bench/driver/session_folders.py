"""Suite: many small files to the server and back, by a session, lftp and rclone."""

import os
import shutil

import session_tools
import user_clients
from clients import Work
from figures import MET, Spread, ratios
from report import Table
from session_works import SMALL

SUITE = "session, folders"
# Of lftp's rate, by the number of connections; and of rclone's, which is asked for four.
TIMES_LFTP = {1: 10, 4: 4}
TIMES_RCLONE = 4
OF_RCLONES_MEMORY = 1 / 3
RCLONE_GOAL = f"many files at {TIMES_RCLONE} times rclone's rate, with 4 connections"
MEMORY_GOAL = "many files with a third of rclone's memory, with 4 connections"
BOTH_WAYS = "both ways"


def lftp_goal(connections):
    return f"many files at {TIMES_LFTP[connections]} times lftp's rate, with {connections} connection" + (
        "s" if connections > 1 else ""
    )


class Folders:
    """What is moved, and where to. Each run's result is looked at before the next takes its place."""

    def __init__(self, server, files, size=SMALL, owner=""):
        """Different owners have different folders."""
        self.files = files
        self.size = size
        self.server = server
        self.local = server.folder / f"local{owner}"
        self.remote = server.make_writable_folder(f"remote{owner}")
        self.arriving = f"arriving{owner}"
        self.fill(self.local)
        self.target = None

    def fill(self, folder):
        """Nothing but these files is in the folder then."""
        folder.mkdir(exist_ok=True)
        for left in folder.iterdir():
            left.unlink()
        for number in range(self.files):
            (folder / f"backup-{number:06}.bak").write_bytes(os.urandom(self.size))

    def ends(self, way):
        """Where the files are, and where they go."""
        if way == "upload":
            return self.local, self.server.served / self.arriving
        return self.server.folder / self.arriving, self.remote

    def aim(self, target):
        """Makes an empty folder the target of the next run."""
        self.check()
        shutil.rmtree(target, ignore_errors=True)
        if target.is_relative_to(self.server.served):
            self.server.make_writable_folder(target.name)
        else:
            target.mkdir()
        self.target = target

    def check(self):
        """A run that left files out, or parts of them, would be a fast one."""
        target, sizes = self.target, self._arrived()
        if not self._are_all(sizes):
            raise RuntimeError(f"{target} holds {len(sizes)} files of {sum(sizes)} bytes in all.")

    def are_whole(self):
        return self._are_all(self._arrived())

    def _are_all(self, sizes):
        return sizes is None or sizes == [self.size] * self.files

    def _arrived(self):
        """The sizes of what the last run has left, if there was one that has not been looked at."""
        target, self.target = self.target, None
        return target and [path.stat().st_size for path in target.iterdir()]


def suite(servers, recorder, goals, effort):
    table = Table(
        f"{effort.folder_files:,} files of 20 kB",
        "Files per second, and how many times the tool's rate the session's is: median (least–greatest). Peak memory "
        "of each in MiB, and the session's to rclone's. lftp mirrors a folder with as many files at a time as the "
        "session has connections; rclone copies four at a time. Both also look up what is there before. The files' "
        "places are in memory. The goals are for both ways together.",
        [
            "server",
            "way",
            "connections",
            "session",
            "lftp",
            "times lftp",
            "rclone",
            "times rclone",
            "memory: session, lftp, rclone",
            "memory, to rclone",
            "goals",
        ],
    )
    for server in servers:
        folders = Folders(server, effort.folder_files)
        runs = {way: _measure(server, folders, way, recorder, effort) for way in ("upload", "download")}
        for connections in TIMES_LFTP:
            table.rows += _rows(server, connections, runs, effort, goals)
    return [table]


def _measure(server, folders, way, recorder, effort):
    clients = {}
    for connections in TIMES_LFTP:
        clients[f"session {connections}"] = by_session(server, folders, way, connections)
        clients[f"lftp {connections}"] = by_tool(session_tools.lftp_mirror, server, folders, way, connections)
    clients["rclone 4"] = by_tool(session_tools.rclone_copy, server, folders, way, 4)
    if way == "download":
        folders.fill(folders.remote)
    runs = recorder.alternate(SUITE, f"{server.name}: {way}", effort.folder_rounds, clients)
    folders.check()
    return runs


def by_session(server, folders, way, connections):
    local, remote = folders.ends(way)

    def before():
        folders.aim(remote if way == "upload" else local)

    work = Work(way, f"{way}-folder", remote.name + "/", local=str(local), before=before)
    return user_clients.session(server, work, connections)


def by_tool(tool, server, folders, way, at_once):
    local, remote = folders.ends(way)

    def prepare():
        folders.aim(remote if way == "upload" else local)
        return tool(server, way, local, remote.name, at_once)

    return prepare


def _rows(server, connections, runs, effort, goals):
    """A row for each way, and one for both together, which is held to the goals."""
    rows = []
    for way in (*runs, BOTH_WAYS):
        ways = list(runs) if way == BOTH_WAYS else [way]
        names = {"session": f"session {connections}", "lftp": f"lftp {connections}", "rclone": "rclone 4"}
        walls = {tool: _added([runs[each][name] for each in ways]) for tool, name in names.items()}
        peaks = {tool: _greatest([runs[each][name] for each in ways]) for tool, name in names.items()}
        files = effort.folder_files * len(ways)
        rates = {tool: f"{Spread.of(files / wall for wall in of_tool).median:.0f}" for tool, of_tool in walls.items()}
        times = {tool: ratios(walls[tool], walls["session"]) for tool in ("lftp", "rclone")}
        memory = ratios(peaks["session"], peaks["rclone"])
        told = ", ".join(f"{Spread.of(of_tool).median / 1024:.1f}" for of_tool in peaks.values())
        verdict = _verdict(server, connections, times, memory, goals) if way == BOTH_WAYS else "–"
        rows.append(
            [server.name, way, connections, rates["session"], rates["lftp"], times["lftp"], rates["rclone"]]
            + [times["rclone"], told, memory, verdict]
        )
    return rows


def _added(runs_of_ways):
    return [sum(run.wall for run in of_round) for of_round in zip(*runs_of_ways)]


def _greatest(runs_of_ways):
    return [max(run.peak for run in of_round) for of_round in zip(*runs_of_ways)]


def _verdict(server, connections, times, memory, goals):
    verdicts = {
        "lftp": goals.judge_spread(
            lftp_goal(connections), server.name, times["lftp"], least=TIMES_LFTP[connections]
        )
    }
    if connections == 4:
        verdicts["rclone"] = goals.judge_spread(RCLONE_GOAL, server.name, times["rclone"], least=TIMES_RCLONE)
        verdicts["memory"] = goals.judge_spread(MEMORY_GOAL, server.name, memory, greatest=OF_RCLONES_MEMORY)
    others = [f"{what} {verdict}" for what, verdict in verdicts.items() if verdict != MET]
    return "; ".join(others) or MET
