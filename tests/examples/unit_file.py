#!/usr/bin/env python3
"""usage: unit_file.py UNIT AGENT SERVER FOLDER
Fails unless systemd accepts the unit, finds little that it exposes, and the unit allows all that the agent asks the
kernel for while it backs up a folder, reopens its log and stops. The agent is traced for that, because a test has no
systemd that would confine it."""

import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "docs"))
from server import PASSWORD, Server  # noqa: E402

EXPOSURE = 15  # of 100; a service without any restriction has 96


def analyze(*arguments):
    ended = subprocess.run(["systemd-analyze", "--no-pager", *arguments], text=True, check=False,
                           stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    return ended.returncode, ended.stdout


def settings_of(unit):
    """The words of each setting; those of a setting that is there twice, together."""
    settings = {}
    for line in unit.split("\n"):
        found = re.match(r"(\w+)=(.*)$", line)
        if found:
            settings.setdefault(found.group(1), []).append(found.group(2).split())
    return settings


def verify(unit, agent, folder):
    """What systemd says of the unit where the agent is installed."""
    installed = folder / "backup-agent.service"
    installed.write_text(re.sub(r"^ExecStart=\S+", f"ExecStart={agent}", unit, flags=re.MULTILINE))
    status, said = analyze("verify", "--man=no", str(installed))
    wrong = [f"systemd-analyze verify: {status}\n{said}"] if status or said else []
    status, said = analyze("security", "--offline=true", f"--threshold={EXPOSURE}", str(installed))
    return wrong + ([f"systemd-analyze security: {said}"] if status else [])


def calls_in(group):
    """The names of a group of system calls, with those of the groups in it."""
    if not group.startswith("@"):
        return {group}
    status, said = analyze("syscall-filter", group)
    if status:
        raise RuntimeError(said)
    names = [line.strip() for line in said.split("\n")[1:] if line.startswith("    ") and "#" not in line]
    return set().union(*(calls_in(name) for name in names))


def allowed_calls(settings):
    allowed = set()
    for words in settings["SystemCallFilter"]:
        denied = words[0].startswith("~")
        names = set().union(*(calls_in(word) for word in [words[0].lstrip("~"), *words[1:]]))
        allowed = allowed - names if denied else allowed | names
    return allowed


def trace(agent, server_program, folder):
    """What the kernel is asked for, a line each."""
    with Server(server_program, folder / "server", "explicit") as server:
        (folder / "photos").mkdir()
        (folder / "photos/a.bak").write_text("the content")
        (folder / "password").write_text(PASSWORD)
        shutil.copy(server.ca, folder / "ca")
        (folder / "agent.ini").write_text(
            f"[Backup]\nUrl=ftp://localhost:{server.port}/photos\nUser=backup\nFolder={folder}/photos\n"
            f"[Log]\nTarget={folder}/log\n")
        environment = {**os.environ, "CREDENTIALS_DIRECTORY": str(folder), "NOTIFY_SOCKET": f"{folder}/nobody"}
        with subprocess.Popen(["strace", "-D", "-f", "-q", "-o", str(folder / "trace"), agent, folder / "agent.ini"],
                              env=environment, stderr=subprocess.PIPE, text=True) as running:
            said = running.stderr.readline()
            running.send_signal(signal.SIGHUP)
            running.send_signal(signal.SIGTERM)
            rest = running.stderr.read()  # until strace has ended, too
        if (said, rest, running.returncode) != ("<6>round 1: 1 sent, 0 failed, 0 unchanged\n", "", 0):
            raise RuntimeError(f"The agent ended with {running.returncode} and said:\n{said}{rest}")
    return (folder / "trace").read_text().split("\n")


def compare(lines, settings):
    """What the agent asks for and the unit does not allow. strace itself starts it with execve."""
    calls = {found.group(1) for found in (re.match(r"\d+ +(\w+)\(", line) for line in lines) if found}
    families = {found.group(1) for found in (re.search(r" socket\((AF_\w+)", line) for line in lines) if found}
    wrong = [f"SystemCallFilter does not allow {call}" for call in sorted(calls - allowed_calls(settings))]
    wrong += [f"RestrictAddressFamilies does not allow {family}"
              for family in sorted(families - set(settings["RestrictAddressFamilies"][0]))]
    wrong += [f"MemoryDenyWriteExecute does not allow {line}" for line in lines
              if re.search(r" (mmap|mprotect)\(.*PROT_WRITE\|PROT_EXEC", line)]
    if not {"connect", "sendto", "openat"} <= calls or "exited with 0" not in lines[-2]:
        wrong.append(f"The trace is incomplete: {sorted(calls)} {sorted(families)}")
    return wrong


def main(unit, agent, server, folder):
    folder = pathlib.Path(folder)
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    text = pathlib.Path(unit).read_text()
    wrong = verify(text, agent, folder) + compare(trace(agent, server, folder), settings_of(text))
    print("\n".join(wrong))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
