#!/usr/bin/env python3
"""usage: run.py programs|projects|commands|settings FOLDER NAME=VALUE...
Runs every block of README.md and docs/*.md of that kind. The values are where the build has what they need."""

import pathlib
import sys

from commands import run_commands
from documents import ROOT, blocks_of, read_all
from running import Place, blocks_by_document, build_project, keys_in, read_settings, run_program

LANGUAGES = {"programs": ["cpp"], "projects": ["cmake"], "commands": ["sh", ""], "settings": ["ini"]}


def run_block(kind, place, block, blocks, documents):
    """What went wrong with one block."""
    if kind == "settings":
        known = blocks_of("host/README.md", (ROOT / "host/README.md").read_text())
        return read_settings(place, block, keys_in("".join(each.text for each in known if each.language == "ini")))
    if kind == "commands":
        return run_commands(place, block, blocks)
    readme = next(each for each in blocks_of("README.md", documents["README.md"]) if each.language == "cpp")
    return {"programs": run_program, "projects": build_project}[kind](place, block, blocks, readme)


def main(kind, folder, *values):
    setup = dict(value.split("=", 1) for value in values)
    documents = read_all()
    found = blocks_by_document(documents, *LANGUAGES[kind])
    wrong = [] if found else [f"There is no block for {kind}."]
    for number, (block, blocks) in enumerate(found):
        place = Place(setup, pathlib.Path(folder) / f"{kind}-{number}")
        complaints = run_block(kind, place, block, blocks, documents)
        print(f"{block}: {'well' if not complaints else 'FAILED'}")
        wrong += complaints
    print("\n".join(wrong))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
