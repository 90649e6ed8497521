"""The calls that are measured, and the files that they need on the server."""

from clients import Work

MIB = 1 << 20
GIB = 1 << 30


def size_name(size):
    return f"{size // GIB:,} GiB" if size >= GIB else f"{size // MIB} MiB"


def names_name(count):
    return f"{count:,} name" + ("s" if count > 1 else "")


def download(server, size):
    name = f"{size}.bak"
    if not (server.served / name).exists():
        server.make_file(name, size)
    return Work(f"download {size_name(size)}", "download", name, size=size)


def upload(server, size):
    source = server.make_file("source.bak", size)
    return Work(f"upload {size_name(size)}", "upload", "uploaded.bak", local=str(source), size=size)


def listing(server, names):
    folder = f"{names}-names"
    if not (server.served / folder).exists():
        server.make_folder(folder, names)
    return Work(f"list {names_name(names)}", "list", folder + "/")


def on_one_file(server):
    """Rename, delete and connection test, in a folder with one file."""
    folder = server.served / "one-file"
    folder.mkdir(exist_ok=True)

    def put_back():
        (folder / "new.bak").unlink(missing_ok=True)
        (folder / "old.bak").touch()

    put_back()
    return [
        Work("rename", "rename", "one-file/", local="new.bak", remote="old.bak", before=put_back),
        Work("delete", "delete", "one-file/", remote="old.bak", before=put_back),
        Work("connection test", "test", "one-file/"),
    ]


def of_each_operation(server, size=MIB, names=1000):
    return [download(server, size), upload(server, size), listing(server, names), *on_one_file(server)]


def of_every_size(server, effort):
    """Each operation, as small and as large as it is measured, and how many pairs of runs of it there shall be.
    Each is to be measured before the next is asked for: their files take the place of one another."""
    for size, pairs in effort.sizes.items():
        yield download(server, size), pairs
        yield upload(server, size), pairs
        # The next one needs the room.
        (server.served / "uploaded.bak").unlink()
    for names, pairs in effort.names.items():
        yield listing(server, names), pairs
    for work in on_one_file(server):
        yield work, effort.small_pairs
