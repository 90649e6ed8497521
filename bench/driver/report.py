"""Tables, for the terminal, for a document and for a spreadsheet."""

import csv
import dataclasses
import io


@dataclasses.dataclass
class Table:
    title: str
    remark: str
    head: list
    rows: list = dataclasses.field(default_factory=list)
    plot: str = ""


def markdown(table):
    lines = [f"### {table.title}", "", *([table.remark, ""] if table.remark else [])]
    lines.append("| " + " | ".join(table.head) + " |")
    lines.append("|---" + "|---:" * (len(table.head) - 1) + "|")
    lines += ["| " + " | ".join(map(str, row)) + " |" for row in table.rows]
    if table.plot:
        lines += ["", f"![{table.title}](performance/{table.plot})"]
    return "\n".join(lines) + "\n"


def terminal(table):
    cells = [list(map(str, row)) for row in [table.head, *table.rows]]
    widths = [max(len(row[column]) for row in cells) for column in range(len(table.head))]
    lines = ["", table.title]
    for row in cells:
        words = [row[0].ljust(widths[0])] + [word.rjust(width) for word, width in zip(row[1:], widths[1:])]
        lines.append("  " + "  ".join(words))
    return "\n".join(lines)


def comma_separated(tables):
    """All tables below one another, each line with its table's title in front. Where a cell has several figures, each
    gets a cell of its own."""
    text = io.StringIO()
    writer = csv.writer(text, lineterminator="\n")
    for table in tables:
        writer.writerow([table.title, *_head_cells(table)])
        for row in table.rows:
            writer.writerow([table.title, *_row_cells(table, row)])
    return text.getvalue()


def _figures(table, column):
    """What the figures of a column's cells are called: those of a cell that has several tell it themselves."""
    for row in table.rows:
        if hasattr(row[column], "FIGURES"):
            return row[column].FIGURES
    return [""]


def _head_cells(table):
    for column, name in enumerate(table.head):
        yield from (f"{name}, {figure}" if figure else name for figure in _figures(table, column))


def _row_cells(table, row):
    for column, cell in enumerate(row):
        figures = _figures(table, column)
        cells = cell.cells() if hasattr(cell, "cells") else [cell]
        yield from cells + [""] * (len(figures) - len(cells))


def marks(part):
    """What a document has above and below the figures of a part."""
    begin = f"<!-- measured, {part}: scripts/bench keep writes what is between these two lines -->"
    return begin, f"<!-- end of what is measured, {part} -->"


def put_between_marks(document, measured, part):
    begin, end = marks(part)
    before, found_begin, rest = document.partition(begin)
    _, found_end, after = rest.partition(end)
    if not found_begin or not found_end:
        raise ValueError(f'There must be a line "{begin}" and, below it, a line "{end}".')
    return f"{before}{begin}\n\n{measured.strip()}\n\n{end}{after}"
