"""Suite: one operation as a process of its own, by a session, lftp and curl."""

import session_tools
import session_works
from beside_bare import ratios_of
from clients import program
from figures import MET, Spread
from report import Table

SUITE = "session, cold"
HALF = ["test", "rename", "delete"]
HALF_GOAL = "test, rename and delete in half of lftp's wall time"
TOOLS = ["lftp", "curl"]
COMPARED = {"wall time": "wall", "CPU time": "cpu"}


def goal(what, tool):
    return f"one operation in no more {what} than {tool}"


def suite(servers, recorder, goals, effort):
    table = Table(
        "One operation as a process",
        "Ratios of a session's runs to the tool's in the same round: median (least–greatest). Below 1, the session "
        "takes less. All trust one certificate.",
        [
            "server",
            "operation",
            "rounds",
            "session, ms",
            *(f"{what}, to {tool}" for tool in TOOLS for what in COMPARED),
            "goals",
        ],
    )
    for server in servers:
        for work in session_works.small(server):
            everyone = {
                "session": program(server, "session", work),
                "lftp": session_tools.lftp(server, work),
                "curl": session_tools.curl(server, work),
            }
            runs = recorder.alternate(SUITE, f"{server.name}: {work.name}", effort.cold_rounds, everyone)
            table.rows.append([server.name, work.name, effort.cold_rounds, *_cells(server, work, runs, goals)])
    return [table]


def _cells(server, work, runs, goals):
    took = f"{Spread.of(1000 * run.wall for run in runs['session']).median:.1f}"
    subject = f"{server.name}: {work.name}"
    ratios, verdicts = [], {}
    for tool in TOOLS:
        for what, figure in COMPARED.items():
            ratio = ratios_of(runs["session"], runs[tool], figure)
            ratios.append(ratio)
            verdicts[f"{what}, {tool}"] = goals.judge_spread(goal(what, tool), subject, ratio, greatest=1)
    if work.operation in HALF:
        verdicts["half of lftp's"] = goals.judge_spread(HALF_GOAL, subject, ratios[0], greatest=0.5)
    others = [f"{what} {verdict}" for what, verdict in verdicts.items() if verdict != MET]
    return [took, *ratios, "; ".join(others) or MET]
