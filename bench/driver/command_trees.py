"""Suite: whole trees to the server and back by the command's push and pull, by lftp, rclone and sftp."""

import subprocess

import command_tools
from beside_bare import ratios_of
from command_tools import PULL, PUSH
from daemons import SSH
from figures import MET, Spread, ratios
from measuring import Run
from report import Table
from session_folders import Folders
from session_works import SMALL

SUITE = "command, trees"
JOBS = [1, 4]
TOOLS = ["lftp", "rclone", "sftp"]
TIMES_LFTP = {1: 8, 4: 4}
RCLONE_GOALS = {"cpu": "less CPU time than rclone", "peak": "less memory than rclone"}
LARGE = 1.02
LARGE_GOAL = f"large files in no more than {LARGE} of the best tool's wall time"
NOT_MEASURED = "–"
BOTH_WAYS = "both ways"


def lftp_goal(jobs):
    return f"many files at {TIMES_LFTP[jobs]} times lftp's rate over FTPS, with {jobs} job{'s' if jobs > 1 else ''}"


class Trees:
    """Where the trees are that the clients copy. Each run's result is looked at before the next takes its place."""

    def __init__(self, server, files, size):
        self.server = server
        self.folders = Folders(server, files, size)

    def ends(self, way):
        """The local folder, and the server's: one is full, and the other is to be filled."""
        if way == PUSH:
            return self.folders.local, self.folders.remote
        return self.server.folder / "arriving", self.server.served / "leaving"

    def fill(self, way):
        if way == PULL:
            leaving = self.server.make_writable_folder("leaving")
            self.folders.fill(leaving)

    def client(self, tool, way, jobs):
        """A run into an empty folder."""
        local, remote = self.ends(way)

        def prepare():
            self.folders.aim(remote if way == PUSH else local)
            return tool(self.server, way, local, remote.name, jobs)

        return prepare

    def client_again(self, tool, way, jobs):
        """A run after one that has copied everything."""
        first = self.client(tool, way, jobs)

        def prepare():
            words, environment = first()
            subprocess.run([str(word) for word in words], env=environment, capture_output=True, check=True)
            return words, environment

        return prepare


def suite(servers, recorder, goals, effort):
    small = _table(f"{effort.tree_files:,} files of 20 kB by the command")
    large = _table(f"{effort.tree_large_files} files of {effort.tree_large_size // 1_000_000} MB by the command")
    again = _table(f"{effort.tree_files:,} files that are there already, by the command")
    for server in servers:
        trees = Trees(server, effort.tree_files, SMALL)
        runs_of = {}
        for way in (PUSH, PULL):
            trees.fill(way)
            for jobs in JOBS:
                runs_of[way, jobs] = _measure(trees, way, jobs, "small files", trees.client, recorder, effort)
                small.rows.append(_row(server, way, jobs, runs_of[way, jobs], _verdicts_beside_rclone, goals))
            runs = _measure(trees, way, 4, "files that are there", trees.client_again, recorder, effort)
            again.rows.append(_row(server, way, 4, runs, _verdicts_beside_rclone, goals))
        for jobs in JOBS:
            both = both_ways(runs_of[PUSH, jobs], runs_of[PULL, jobs])
            small.rows.append(_row(server, BOTH_WAYS, jobs, both, _lftp_verdict, goals))
        trees = Trees(server, effort.tree_large_files, effort.tree_large_size)
        for way in (PUSH, PULL):
            trees.fill(way)
            for jobs in JOBS:
                runs = _measure(trees, way, jobs, "large files", trees.client, recorder, effort)
                large.rows.append(_row(server, way, jobs, runs, _large_verdicts, goals))
    return [small, large, again, _start(servers[0], recorder, goals, effort)]


def both_ways(pushed, pulled):
    """A push and the pull of the same round as one run."""
    return {
        name: [
            Run(one.wall + other.wall, one.user + other.user, one.system + other.system, max(one.peak, other.peak))
            for one, other in zip(pushed[name], pulled[name])
        ]
        for name in pushed
    }


def _table(title):
    return Table(
        title,
        "Seconds that push and pull take, and ratios of their runs to the tool's in the same round: median "
        "(least–greatest). Below 1, the command takes less. lftp mirrors the folder, rclone copies it, with as many "
        "files at a time as the command has jobs; sftp, over SSH alone, has one. The files' places are in memory. The goals "
        "beside lftp are for both ways together.",
        ["server", "way", "jobs", "s", *(f"wall time, to {tool}" for tool in TOOLS)]
        + ["CPU time, to rclone", "memory, to rclone", "goals"],
    )


def _clients(server, jobs):
    clients = {"command": command_tools.command, "lftp": command_tools.lftp, "rclone": command_tools.rclone}
    if server.name == SSH and jobs == 1:
        clients["sftp"] = command_tools.sftp
    return clients


def _measure(trees, way, jobs, what, run_by, recorder, effort):
    clients = {name: run_by(tool, way, jobs) for name, tool in _clients(trees.server, jobs).items()}
    work = f"{trees.server.name}: {way} of {what}, {jobs} at a time"
    runs = recorder.alternate(SUITE, work, effort.tree_rounds, clients)
    trees.folders.check()
    return runs


def _row(server, way, jobs, runs, judge, goals):
    subject = f"{server.name}: {way}, {jobs}"
    took = f"{Spread.of(run.wall for run in runs['command']).median:.2f}"
    walls = {tool: ratios_of(runs["command"], runs[tool], "wall") if tool in runs else NOT_MEASURED for tool in TOOLS}
    beside_rclone = {what: ratios_of(runs["command"], runs["rclone"], what) for what in RCLONE_GOALS}
    verdicts = judge(server, jobs, subject, runs, goals)
    others = [f"{what} {verdict}" for what, verdict in verdicts.items() if verdict != MET]
    return [server.name, way, jobs, took, *walls.values(), *beside_rclone.values(), "; ".join(others) or MET]


def _verdicts_beside_rclone(server, jobs, subject, runs, goals):
    return {
        what: goals.judge_spread(goal, subject, ratios_of(runs["command"], runs["rclone"], what), greatest=1)
        for what, goal in RCLONE_GOALS.items()
    }


def _lftp_verdict(server, jobs, subject, runs, goals):
    if server.name == SSH:
        return {}
    times = ratios_of(runs["lftp"], runs["command"], "wall")
    return {"lftp": goals.judge_spread(lftp_goal(jobs), subject, times, least=TIMES_LFTP[jobs])}


def _large_verdicts(server, jobs, subject, runs, goals):
    verdicts = _verdicts_beside_rclone(server, jobs, subject, runs, goals)
    best = [min(runs[tool][number].wall for tool in TOOLS if tool in runs) for number in range(len(runs["command"]))]
    of_best = ratios([run.wall for run in runs["command"]], best)
    verdicts["the best tool"] = goals.judge_spread(LARGE_GOAL, subject, of_best, greatest=LARGE)
    return verdicts


START_GOAL = "sftpclient --version in less than 10 ms of CPU time"
START_MILLISECONDS = 10


def _start(server, recorder, goals, effort):
    runs = recorder.alternate(
        SUITE, "start", effort.cold_rounds, {"command": lambda: command_tools.sftpclient(server, "--version")}
    )["command"]
    cpu = Spread.of(1000 * run.cpu for run in runs)
    wall = Spread.of(1000 * run.wall for run in runs)
    verdict = goals.judge_spread(START_GOAL, "start", cpu, greatest=START_MILLISECONDS)
    table = Table(
        "The command's start",
        "sftpclient --version, in ms: median (least–greatest).",
        ["what", "rounds", "CPU time", "wall time", "goals"],
    )
    table.rows.append(["start", effort.cold_rounds, cpu, wall, verdict])
    return table
