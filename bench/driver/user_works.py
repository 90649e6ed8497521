"""The calls that a user compares. Each but the listing can look whether it has had its effect."""

import dataclasses

import session_works


def small(server):
    """Those with little to move, by name."""
    little = session_works.SMALL
    works = [
        _rename(server),
        session_works.listing(server, 100),
        download(server, "20 kB", little),
        upload(server, "20 kB", little),
    ]
    return {work.name: work for work in works}


def download(server, name, size):
    target = server.folder / "got.bak"
    return dataclasses.replace(
        session_works.download(server, name, size),
        local=str(target),
        before=lambda: target.unlink(missing_ok=True),
        done=lambda: _holds(target, size),
    )


def upload(server, name, size):
    work = session_works.upload(server, name, size)
    target = server.served / work.path
    return dataclasses.replace(work, done=lambda: _holds(target, size))


def _holds(path, size):
    return path.exists() and path.stat().st_size == size


def _rename(server):
    work = session_works.on_one_file(server)["rename"]
    folder = server.served / work.path
    return dataclasses.replace(work, done=lambda: [each.name for each in folder.iterdir()] == [work.local])
