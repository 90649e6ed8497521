"""Suite: what one further call costs on a session that has its connection."""

import daemons
import session_works
from clients import program
from figures import Spread, per_unit
from report import Table

SUITE = "session, warm"
AT_MOST_MS = 1
GOAL = "rename and size on a kept connection in less than 1 ms of CPU time"
ROUND_TRIPS = 4
TRIPS_GOAL = f"listings and small transfers on a kept connection in no more than {ROUND_TRIPS} round trips"
MILLISECONDS = "{:.2f} ({:.2f}–{:.2f})"


def suite(servers, recorder, goals, effort):
    table = Table(
        "A further call on a kept connection",
        f"In milliseconds of the client: a run with {effort.warm_calls + 1} calls less one with one call, for each of "
        "the others: median (least–greatest).",
        ["server", "operation", "rounds", "wall time", "CPU time", "goal"],
    )
    for server in servers:
        for work in session_works.repeatable(server):
            numbers = {"1": 1, "many": effort.warm_calls + 1}
            pair = {name: program(server, "session", work, calls=calls) for name, calls in numbers.items()}
            runs = recorder.alternate(SUITE, f"{server.name}: {work.name}", effort.warm_rounds, pair)
            wall, cpu = (_of_each(runs, what, effort.warm_calls) for what in ("wall", "cpu"))
            verdict = "–"
            if work.operation in ("rename", "size"):
                subject = f"{server.name}: {work.name}"
                verdict = goals.judge_spread(GOAL, subject, cpu, greatest=AT_MOST_MS)
            table.rows.append([server.name, work.name, effort.warm_rounds, wall, cpu, verdict])
    with daemons.Distant(servers[0].build) as distant:
        return [table, _far_away(distant, recorder, goals, effort)]


def _far_away(server, recorder, goals, effort):
    delay = server.DELAY_MS
    table = Table(
        f"A further call where each reply takes {delay} ms",
        f"With the test server, over implicit TLS. Wall time in milliseconds: median (least–greatest); and how many times "
        f"{delay} ms that is.",
        ["operation", "rounds", "wall time", "round trips", "goal"],
    )
    for work in session_works.repeatable(server):
        numbers = {"1": 1, "many": effort.far_calls + 1}
        pair = {name: program(server, "session", work, calls=calls) for name, calls in numbers.items()}
        runs = recorder.alternate(SUITE, f"{server.name}: {work.name}", effort.warm_rounds, pair)
        wall = _of_each(runs, "wall", effort.far_calls)
        trips = round(wall.median / delay)
        # So much is short of one more.
        verdict = goals.judge_spread(TRIPS_GOAL, work.name, wall, greatest=(ROUND_TRIPS + 0.5) * delay)
        table.rows.append([work.name, effort.warm_rounds, wall, trips, verdict])
    return table


def _of_each(runs, what, calls):
    pairs = zip(runs["1"], runs["many"])
    each = (1000 * per_unit(getattr(one, what), getattr(many, what), calls) for one, many in pairs)
    return Spread.of(each, MILLISECONDS)
