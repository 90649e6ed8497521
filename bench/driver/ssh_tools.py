"""sftp and curl over SSH."""

import pathlib

# Its batch mode, which would rather not be asked for a password: what asks for one is a program.
ASKS = "#!/bin/sh\necho \"$BENCH_PASSWORD\"\n"


def sftp_batch(server, does):
    """Runs one line of a batch."""
    batch = server.folder / "batch"
    batch.write_text(does + "\n")
    asked = server.folder / "asked"
    asked.write_text(ASKS)
    asked.chmod(0o700)
    options = ["BatchMode=no", "NumberOfPasswordPrompts=1", f"UserKnownHostsFile={server.known_hosts()}"]
    words = [word for option in options for word in ("-o", option)]
    environment = {**server.environment(), "SSH_ASKPASS": str(asked), "SSH_ASKPASS_REQUIRE": "force"}
    return ["sftp", "-q", *words, "-P", server.port, "-b", batch, "backup@localhost"], environment


def sftp(server, work):
    there = server.root + work.path
    does = {
        "rename": f"rename {there}{work.remote} {there}{work.local}",
        "list": f"ls -1 {there}",
        "download": f"get {there} {work.local}",
        "upload": f"put {work.local} {there}",
    }[work.operation]

    def prepare():
        work.before()
        return sftp_batch(server, does)

    return prepare


def sftp_folder(server, way, local, remote, _):
    there = server.root + remote
    return sftp_batch(server, f"put -r {local}/. {there}" if way == "upload" else f"get -r {there}/. {local}")


def curl(server, work):
    there = server.root + work.path
    options = {
        "rename": ["--head", "--quote", f"rename {there}{work.remote} {there}{work.local}"],
        "list": ["--list-only", "--output", work.local],
        "download": ["--output", work.local],
        "upload": ["--upload-file", work.local],
    }[work.operation]

    def prepare():
        work.before()
        return curl_command(server, [*options, server.url(work.path)])

    return prepare


def curl_command(server, words):
    """It looks for known hosts in the user's folder alone."""
    known = pathlib.Path(server.folder) / "home/.ssh/known_hosts"
    known.parent.mkdir(parents=True, exist_ok=True)
    known.write_text(server.known_hosts().read_text())
    login = ["curl", "--disable", "--silent", "--user", f"backup:{server.password}"]
    return [*login, *words], {**server.environment(), "HOME": str(server.folder / "home")}
