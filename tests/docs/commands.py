"""Blocks of the shell: commands of this repository are looked at, because CI runs them, and all others are run."""

import json
import os
import re
import shutil

from documents import ROOT
from running import write_files
from server import HOST, Server


def commands_in(text):
    """One command an element, without comments; lines that go on are joined."""
    plain = re.sub(r"\s+#.*$", "", text.replace("\\\n", " "), flags=re.MULTILINE)
    return [part.strip() for line in plain.split("\n") for part in line.split(" && ") if part.strip()]


def presets(kind):
    found = json.loads((ROOT / "CMakePresets.json").read_text())[kind + "Presets"]
    return {preset["name"] for preset in found if not preset.get("hidden")}


def packages():
    said = (ROOT / "cmake/Package.cmake").read_text()
    return re.findall(r"set\(CPACK_DEBIAN_(?:DEVELOPMENT|COMMAND)_PACKAGE_NAME (\S+)\)", said)


def fault_of_script(command):
    path = ROOT / command.split()[0]
    return None if path.is_file() and os.access(path, os.X_OK) else f"there is no script {path}"


def fault_of_preset(command):
    kind = {"cmake --build": "build", "cmake": "configure", "ctest": "test", "cpack": "package"}
    found = re.fullmatch(r"(cmake --build|cmake|ctest|cpack) --preset (\S+)", command)
    return None if found and found.group(2) in presets(kind[found.group(1)]) else f"there is no such preset: {command}"


def fault_of_install(command):
    found = re.fullmatch(r"sudo apt-get install \./build/package/packages/\*\.deb", command)
    return None if found and len(packages()) == 2 else f"this installs none of our packages: {command}"


# The commands of this repository: who looks at each.
OURS = [(r"(\./)?scripts/", fault_of_script), (r"(cmake|ctest|cpack)( --build)? --preset ", fault_of_preset),
        (r"sudo apt-get install ", fault_of_install)]


def fault_of_our_own(command):
    """Whether the command is one of this repository, and what is wrong with it."""
    for pattern, fault in OURS:
        if re.match(pattern, command):
            return True, fault(command)
    return False, None


def is_followed_by_a_release(block):
    """The guide to a release's verification needs a release; the gate that makes one follows it to the letter."""
    return f"$top/{block.document}" in (ROOT / "scripts/release").read_text()


def run_commands(place, block, blocks):
    """Runs what is not our own, in a folder with the files of the document."""
    if is_followed_by_a_release(block):
        return []
    write_files(place, blocks)
    wrong = []
    for command in commands_in(block.text):
        ours, fault = fault_of_our_own(command)
        if ours:
            wrong += [f"{block}: {fault}"] if fault else []
        elif command.startswith("sftpclient "):
            wrong += run_doctor(place, block, command)
        else:
            wrappers = 'g++() { command "$DOCUMENT_CXX" "$@" $DOCUMENT_SANITIZE; }\n'
            status, said = place.run(["bash", "-euo", "pipefail", "-c", wrappers + command],
                                     DOCUMENT_CXX=place.setup["compiler"],
                                     DOCUMENT_SANITIZE=" ".join(place.sanitizer()))
            wrong += [f"{block}: {command}: {status}\n{said}"] if status else []
    return wrong


def run_doctor(place, block, command):
    """Against the test server; the doctor's status may tell of operations that will fail, but not of wrong usage."""
    tls = "implicit" if "ftps://" in command else "explicit"
    with Server(place.setup["server"], place.folder / "doctor", tls) as server:
        shutil.copy(server.ca, place.work / "ca.pem")
        words = command.replace(HOST, f"localhost:{server.port}").split()
        status, said = place.run([place.setup["command"], *words[1:]])
    return [f"{block}: {command}: {status}\n{said}"] if status not in (0, 1, 3) or "operations:" not in said else []
