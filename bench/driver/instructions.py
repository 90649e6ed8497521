"""usage: instructions.py BUILD [keep]

Counts the instructions of the library's own code in one call of each operation, and fails where an operation has
grown by more than 2 % over the number in bench/instructions.txt. "keep" writes these numbers instead.
"""

import pathlib
import sys

import callgrind
import clients
import serving
import works

KEPT = pathlib.Path(__file__).resolve().parent.parent / "instructions.txt"
ALLOWED_GROWTH = 0.02


def counts(build):
    # The small trust store: nothing of the library's own goes by its size, and it takes a tenth of the time.
    with serving.Server(build) as server:
        found = {}
        for work in works.of_each_operation(server):
            command, environment = clients.program(server, "library", work, trust=server.small_trust)()
            found[work.name] = callgrind.count(command, environment).own
        return found


def read_kept():
    lines = (line.rpartition(" ") for line in KEPT.read_text().splitlines() if not line.startswith("#"))
    return {name.strip(): int(number) for name, _, number in lines}


def write_kept(found):
    head = "# Instructions of the library's own code in one call; `scripts/gates/instructions keep` writes this file.\n"
    KEPT.write_text(head + "".join(f"{name:<20} {number:>6}\n" for name, number in found.items()))


def complaints(kept, found):
    """What is wrong with these numbers, a line each."""
    if kept.keys() != found.keys():
        return [f"Kept are {', '.join(kept)}; counted were {', '.join(found)}."]
    return [
        f"{name}: {found[name]:,} instructions, {found[name] / number - 1:+.1%} over the {number:,} that are kept"
        for name, number in kept.items()
        if found[name] > number * (1 + ALLOWED_GROWTH)
    ]


def main(build, keep):
    found = counts(build)
    for name, number in found.items():
        print(f"{name:<20} {number:>6}")
    if min(found.values()) == 0:
        sys.exit("No instruction was counted in the library: callgrind did not see it.")
    if keep:
        write_kept(found)
        return
    wrong = complaints(read_kept(), found)
    if wrong:
        sys.exit(
            "The library's own code has grown:\n  "
            + "\n  ".join(wrong)
            + "\nIf the change is worth it, run scripts/gates/instructions keep and commit bench/instructions.txt."
        )


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]), sys.argv[2:] == ["keep"])
