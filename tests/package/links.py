#!/usr/bin/env python3
"""usage: links.py FOLDER
Fails unless every link of the documents below FOLDER, but those to the net, leads to a file or folder that is there."""

import pathlib
import re
import sys


def text_of(document):
    """Without blocks of code, where brackets mean other things."""
    return re.sub(r"^```.*?^```$", "", document.read_text(), flags=re.MULTILINE | re.DOTALL)


def main(folder):
    documents = sorted(pathlib.Path(folder).rglob("*.md"))
    links = [(document, target) for document in documents
             for target in re.findall(r"\]\(([^)#]+)[^)]*\)", text_of(document)) if "://" not in target]
    lost = [f"{document}: {target}" for document, target in links if not (document.parent / target).exists()]
    print("\n".join(lost or [f"{len(links)} links in {len(documents)} documents"]))
    return 1 if lost or not links else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
