"""Suite: how long one operation takes, as a process of its own, by each client."""

import user_clients
import user_works
import users
from report import Table

SUITE = "users, operations"
FORM = "{:.0f}"


def suite(build, recorder, goals, effort):
    table = Table(
        "One operation",
        "Milliseconds of wall time, of a process that begins, logs in, does it and ends. " + users.HOW_TO_READ,
        ["condition", "operation", "rounds", *users.HEAD],
    )
    for condition in users.CONDITIONS:
        with users.serve(condition, build) as server:
            works = user_works.small(server)
            for name in condition.small:
                table.rows.append(_row(condition, server, works[name], recorder, goals, effort))
    return [table]


def _row(condition, server, work, recorder, goals, effort):
    clients = users.clients_of(condition, user_clients.each(server, work))
    what = f"{condition.name}: {work.name}"
    runs = recorder.alternate_able(SUITE, what, effort.user_rounds, clients, lambda name: work.done())
    seconds = users.per_unit(runs, dict.fromkeys(clients, 1))
    cells = users.cells(seconds, goals, users.TIME_GOAL, what, FORM, lambda taken: 1000 * taken)
    return [condition.name, work.name, effort.user_rounds, *cells]
