"""Suite: a large file each way, by each client."""

import user_clients
import user_works
import users
from report import Table
from works import size_name

SUITE = "users, large files"
FORM = "{:.0f}"
MB = 1_000_000


def suite(build, recorder, goals, effort):
    table = Table(
        f"A file of {size_name(effort.user_large_size)}",
        "MB (1,000,000 bytes) a second, the login included. " + users.HOW_TO_READ,
        ["condition", "way", "rounds", *users.HEAD],
    )
    for condition in users.CONDITIONS:
        if not condition.large:
            continue
        with users.serve(condition, build) as server:
            for make in (user_works.download, user_works.upload):
                table.rows.append(_row(condition, server, make, recorder, goals, effort))
    return [table]


def _row(condition, server, make, recorder, goals, effort):
    size = effort.user_large_size
    work = make(server, size_name(size), size)
    clients = users.clients_of(condition, user_clients.each(server, work))
    what = f"{condition.name}: {work.name}"
    runs = recorder.alternate_able(SUITE, what, effort.user_rounds, clients, lambda name: work.done())
    # The next one needs the room.
    work.before()
    seconds = users.per_unit(runs, dict.fromkeys(clients, size / MB))
    cells = users.cells(seconds, goals, users.RATE_GOAL, what, FORM, lambda taken: 1 / taken)
    return [condition.name, work.operation, effort.user_rounds, *cells]
