"""Suite: a large file each way, by a session, a plain libcurl program, lftp, and OpenSSL alone."""

import session_tools
import session_works
from beside_bare import ratios_of
from clients import program
from figures import MET, Spread
from report import Table
from works import size_name

SUITE = "session, large files"
WITHIN = 1.02
PLAIN_GOALS = {
    "wall": "a large file in a plain libcurl program's wall time, within 2 %",
    "cpu": "a large file in a plain libcurl program's CPU time, within 2 %",
}
LFTP_GOAL = "a large file in less CPU time than lftp"


def suite(servers, recorder, goals, effort):
    table = Table(
        f"{size_name(effort.large_size)} each way",
        "Ratios of a session's runs to the others' in the same round: median (least–greatest). Client and server share "
        "one processor: the wall time is what both take together. OpenSSL alone encrypts or decrypts the same bytes on "
        "a connection to the same server, and does nothing with them.",
        [
            "server",
            "way",
            "rounds",
            "session, MiB/s",
            "wall, to plain",
            "CPU, to plain",
            "wall, to lftp",
            "CPU, to lftp",
            "wall, to OpenSSL",
            "CPU, to OpenSSL",
            "goals",
        ],
    )
    for server in servers:
        for make in (session_works.upload, session_works.download):
            work = make(server, size_name(effort.large_size), effort.large_size)
            everyone = {
                "session": program(server, "session", work),
                "plain": program(server, "plain", work, polled=True),
                "lftp": session_tools.lftp(server, work),
                "openssl": program(server, "openssl", work),
            }
            runs = recorder.alternate(SUITE, f"{server.name}: {work.name}", effort.large_rounds, everyone)
            work.before()
            table.rows.append([server.name, work.operation, effort.large_rounds, *_cells(server, work, runs, goals)])
    return [table]


def _cells(server, work, runs, goals):
    rate = f"{Spread.of(work.size / (1 << 20) / run.wall for run in runs['session']).median:.0f}"
    compared = {
        (other, what): ratios_of(runs["session"], runs[other], what)
        for other in ("plain", "lftp", "openssl")
        for what in ("wall", "cpu")
    }
    subject = f"{server.name}: {work.operation}"
    verdicts = {
        f"{what}, plain": goals.judge_spread(PLAIN_GOALS[what], subject, compared["plain", what], greatest=WITHIN)
        for what in PLAIN_GOALS
    }
    verdicts["CPU, lftp"] = goals.judge_spread(LFTP_GOAL, subject, compared["lftp", "cpu"], greatest=1)
    others = [f"{what} {verdict}" for what, verdict in verdicts.items() if verdict != MET]
    return [rate, *compared.values(), "; ".join(others) or MET]
