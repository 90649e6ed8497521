"""The calls of a session that are measured, and the files that they need on the server."""

from clients import Work

SMALL = 20_000


def download(server, name, size):
    server.make_file("down.bak", size)
    return Work(f"download {name}", "download", "down.bak", size=size)


def upload(server, name, size):
    source = server.folder / "source.bak"
    with open(source, "wb") as file:
        file.truncate(size)
    target = server.make_writable_folder("up") / "up.bak"
    return Work(
        f"upload {name}",
        "upload",
        "up/up.bak",
        local=str(source),
        before=lambda: target.unlink(missing_ok=True),
        size=size,
    )


def on_one_file(server):
    """Rename, delete, size and test, in a folder with one file."""
    folder = server.make_writable_folder("one-file")

    def put_back():
        (folder / "new.bak").unlink(missing_ok=True)
        (folder / "old.bak").touch()

    put_back()
    return {
        "rename": Work("rename", "rename", "one-file/", local="new.bak", remote="old.bak", before=put_back),
        "delete": Work("delete", "delete", "one-file/", remote="old.bak", before=put_back),
        "test": Work("test", "test", "one-file/"),
        "size": Work("size", "size", "down.bak"),
    }


def listing(server, names):
    folder = server.make_writable_folder(f"{names}-names")
    for number in range(names):
        (folder / f"backup-{number:06}.bak").touch()
    return Work(f"list {names} names", "list", f"{names}-names/")


def small(server):
    """Each operation on little: what it costs is the way there."""
    return _little(server, "test", "rename", "delete")


def repeatable(server):
    """What can be called again and again."""
    return _little(server, "rename", "size")


def _little(server, *names):
    """These calls on one file, and the transfers of little."""
    of_one_file = on_one_file(server)
    transfers = [listing(server, 100), download(server, "20 kB", SMALL), upload(server, "20 kB", SMALL)]
    return [*(of_one_file[name] for name in names), *transfers]
