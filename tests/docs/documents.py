"""The documents that are held to what they say: README.md and docs/*.md, in pieces."""

import pathlib
import re
from dataclasses import dataclass

ROOT = pathlib.Path(__file__).resolve().parents[2]


@dataclass(frozen=True)
class Block:
    """A block of code."""

    document: str
    line: int
    language: str
    text: str

    def __str__(self):
        return f"{self.document}:{self.line}"

    @property
    def name(self):
        """The file's name that a comment in the first line gives, or nothing."""
        first = re.match(r"(?://|;|#) (\S+\.\w+)\n", self.text)
        return first.group(1) if first else None


def read_all():
    """The text of each document, by its path from the top."""
    paths = [ROOT / "README.md", ROOT / "SECURITY.md", *sorted((ROOT / "docs").glob("*.md"))]
    return {str(path.relative_to(ROOT)): path.read_text() for path in paths}


def blocks_of(document, text):
    """All blocks, fenced or indented; the language of the latter is empty."""
    blocks, begun, fence, language, kept = [], 0, None, "", []
    before = ""
    for number, line in enumerate([*text.split("\n"), ""], 1):
        mark = re.match(r"\s*(```+|~~~+)\s*(.*)$", line)
        if fence:
            if mark and mark.group(1).startswith(fence) and not mark.group(2):
                blocks.append(Block(document, begun, language, "".join(kept)))
                fence = None
            else:
                kept.append(line + "\n")
        elif mark:
            fence, language, begun, kept = mark.group(1), mark.group(2).strip(), number, []
        elif line.startswith("    ") and (begun < 0 or not before.strip()):
            if begun >= 0:
                begun, kept = -number, []
            kept.append(line[4:] + "\n")
        elif begun < 0:
            blocks.append(Block(document, -begun, "", "".join(kept)))
            begun = 0
        before = line
    if fence:
        raise ValueError(f"{document}:{begun}: the block has no end")
    return blocks


def all_blocks(documents):
    return [block for document, text in documents.items() for block in blocks_of(document, text)]


def without_blocks(document, text):
    """The text with an empty line for each line of a block."""
    lines = text.split("\n")
    for block in blocks_of(document, text):
        fences = 2 if block.language or lines[block.line - 1].lstrip().startswith(("```", "~~~")) else 0
        for number in range(block.line - 1, block.line - 1 + block.text.count("\n") + fences):
            lines[number] = ""
    return "\n".join(lines)


def code_spans(text):
    return re.findall(r"(?<!`)`([^`\n]+)`(?!`)", text)


def rows_of(text):
    """The rows of all tables below their headings: a list of cells for each."""
    rows = []
    for line in text.split("\n"):
        if line.startswith("|"):
            cells = [cell.strip() for cell in re.split(r"(?<!\\)\|", line)[1:-1]]
            if not all(re.fullmatch(r"[-: ]*", cell) for cell in cells):
                rows.append(cells)
    return rows


def section(text, heading):
    """What stands below "## heading", up to the next one."""
    found = re.search(rf"^## {re.escape(heading)}\n(.*?)(?=^## |\Z)", text, re.MULTILINE | re.DOTALL)
    return found.group(1) if found else ""


def anchors_of(text):
    """What links can point to, as GitHub names it."""
    anchors = set()
    for heading in re.findall(r"^#+ (.*)$", text, re.MULTILINE):
        kept = re.sub(r"[^\w\- ]", "", heading.lower())
        anchors.add(kept.strip().replace(" ", "-"))
    return anchors
