"""Suite: many small files each way, by each client."""

import session_tools
import session_works
import ssh_tools
import user_clients
import user_works
import users
from daemons import SSH
from report import Table
from session_folders import Folders, by_session, by_tool

SUITE = "users, folders"
FORM = "{:.0f}"
AT_ONCE = [1, 4]


def suite(build, recorder, goals, effort):
    table = Table(
        "Many files of 20 kB",
        "Files a second, the login included; clients that are slow with many files get fewer of them: "
        + ", ".join(f"{name} {files}" for name, files in effort.user_files.items())
        + ". SFtpClient makes one call after another, each with a login of its own; curl gets all names at once; lftp "
        "and sftp copy a folder, and so does rclone, four files at a time. " + users.HOW_TO_READ,
        ["condition", "way", "connections", "rounds", *users.HEAD],
    )
    for condition in users.CONDITIONS:
        if not condition.folders:
            continue
        with users.serve(condition, build) as server:
            folders = {name: Folders(server, files, owner=name) for name, files in effort.user_files.items()}
            for way in ("download", "upload"):
                if way == "download":
                    for each in folders.values():
                        each.fill(each.remote)
                for connections in AT_ONCE:
                    table.rows.append(_row(condition, server, folders, way, connections, recorder, goals, effort))
    return [table]


def _row(condition, server, folders, way, connections, recorder, goals, effort):
    clients = users.clients_of(condition, _clients(server, folders, way, connections))
    what = f"{condition.name}: {way} of many files, {connections} at a time"
    runs = recorder.alternate_able(SUITE, what, effort.user_rounds, clients, lambda name: folders[name].are_whole())
    seconds = users.per_unit(runs, effort.user_files)
    cells = users.cells(seconds, goals, users.RATE_GOAL, what, FORM, lambda taken: 1 / taken)
    return [condition.name, way, connections, effort.user_rounds, *cells]


def _clients(server, folders, way, connections):
    clients = {
        users.OURS: by_session(server, folders[users.OURS], way, connections),
        "lftp": by_tool(session_tools.lftp_mirror, server, folders["lftp"], way, connections),
    }
    if connections > 1:
        clients["rclone"] = by_tool(session_tools.rclone_copy, server, folders["rclone"], way, connections)
        return clients
    clients["SFtpClient"] = _calls(server, folders["SFtpClient"], way)
    clients["curl"] = by_tool(_curl, server, folders["curl"], way, connections)
    if server.name == SSH:
        clients["sftp"] = by_tool(ssh_tools.sftp_folder, server, folders["sftp"], way, connections)
    return clients


def _calls(server, folders, way):
    """Of one file, as often as there are files: each call is one for itself anyway."""
    make = {"download": user_works.download, "upload": user_works.upload}[way]
    return user_clients.repeated(server, make(server, "20 kB", session_works.SMALL), folders.files)


def _curl(server, way, local, remote, _):
    url = server.url(remote + "/")
    if way == "upload":
        files = ",".join(str(path) for path in sorted(local.iterdir()))
        words = ["--upload-file", f"{{{files}}}", url]
    else:
        names = sorted(path.name for path in (server.served / remote).iterdir())
        words = ["--remote-name-all", "--output-dir", local, f"{url}{{{','.join(names)}}}"]
    words.append("--fail-early")
    if server.name == SSH:
        return ssh_tools.curl_command(server, words)
    return session_tools.curl_command(server, words), server.environment()
