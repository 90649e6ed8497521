"""Counts the instructions of a run, those of one object and those of all."""

import dataclasses
import re
import subprocess
import tempfile

LIBRARY = "libSFtpClient.so"

_OBJECT = re.compile(r"ob=\((\d+)\)(?: (.*))?$")
_COST = re.compile(r"(?:\+\d+|-\d+|\*|\d+|0x[0-9a-f]+) (\d+)$")


@dataclasses.dataclass(frozen=True)
class Count:
    own: int
    total: int

    @property
    def share(self):
        return self.own / self.total


def parse(lines, library=LIBRARY):
    """Adds up callgrind's own costs. The line after `calls=` holds what was called, which is counted where it is."""
    names = {}
    own = total = 0
    told = None
    in_library = skip = False
    for line in lines:
        line = line.rstrip("\n")
        if skip:
            skip = False
        elif found := _OBJECT.match(line):
            number, name = found.groups()
            names.setdefault(number, name)
            in_library = library in names[number]
        elif line.startswith("calls="):
            skip = True
        elif found := _COST.match(line):
            cost = int(found.group(1))
            total += cost
            own += cost if in_library else 0
        # A called function's object is named too, as "cob=", and may be named there first.
        elif line.startswith("cob=") and (found := _OBJECT.match(line[1:])):
            names.setdefault(found.group(1), found.group(2))
        elif line.startswith("totals: "):
            told = int(line.split()[1])
    if total != told:
        raise ValueError(f"The costs add up to {total}, but callgrind says {told}.")
    return Count(own, total)


def count(command, environment):
    with tempfile.NamedTemporaryFile(prefix="sftpclient-callgrind-") as out:
        words = ["valgrind", "--tool=callgrind", f"--callgrind-out-file={out.name}", *map(str, command)]
        done = subprocess.run(words, env=environment, capture_output=True, text=True, errors="replace", check=False)
        if done.returncode != 0:
            raise RuntimeError(f"{' '.join(words)} ended with {done.returncode}: {done.stderr[-2000:]}")
        with open(out.name, encoding="utf-8") as file:
            return parse(file)
