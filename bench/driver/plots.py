"""Plots of the tables, drawn by gnuplot."""

import statistics
import subprocess

import beside_tools

COLOURS = {"library": "#1b6ca8", "bare": "#e08e1b", "curl": "#5b9f5b", "lftp": "#9b5b9b"}
STYLE = """
set terminal svg size 860,420 font "sans-serif,12" background "white"
set output "{path}"
set key outside right top
set grid y lc rgb "#dddddd"
set border 3
set tics nomirror
"""


def _cell(value):
    return f'"{value}"' if isinstance(value, str) else str(value)


def _block(name, rows):
    return f"${name} << EOD\n" + "\n".join(" ".join(map(_cell, row)) for row in rows) + "\nEOD\n"


def _draw(path, script):
    subprocess.run(["gnuplot"], input=STYLE.format(path=path) + script, text=True, check=True)


def _median(recorder, suite, work, client, figure):
    return statistics.median(figure(row) for row in recorder.rows if row[:3] == [suite, work, client])


def _works(recorder, suite):
    return list(dict.fromkeys(row[1] for row in recorder.rows if row[0] == suite))


def cpu(recorder, path):
    """A group of bars for each operation."""
    rows = [
        [work, *(_median(recorder, beside_tools.SUITE, work, name, lambda row: row[5] + row[6]) for name in COLOURS)]
        for work in _works(recorder, beside_tools.SUITE)
    ]
    bars = ", ".join(
        f'$data using {column + 2}:xtic(1) title "{name}" lc rgb "{colour}"'
        for column, (name, colour) in enumerate(COLOURS.items())
    )
    _draw(path, _block("data", rows) + f"""
set style data histograms
set style fill solid noborder
set logscale y
set yrange [0.005:*]
set ylabel "user and system time in s (median)"
set xtics rotate by 30 right
plot {bars}
""")


def threads(recorder, tables, path):
    table = next(each for each in tables if each.plot == "threads.svg")
    kinds = list(dict.fromkeys(row[0] for row in table.rows))
    blocks = "".join(
        _block(f"kind{number}", [[row[1], float(row[3]), float(row[4])] for row in table.rows if row[0] == kind])
        for number, kind in enumerate(kinds)
    )
    lines = ", ".join(
        f"$kind{number} using 1:{column} with linespoints dt {number + 1} "
        f'lc rgb "{COLOURS[name]}" title "{kind}, {name}"'
        for number, kind in enumerate(kinds)
        for column, name in ((2, "library"), (3, "bare"))
    )
    _draw(path, blocks + f"""
set logscale x 2
set xlabel "threads"
set ylabel "calls per second (median)"
set yrange [0:*]
plot {lines}
""")


def memory(tables, path):
    table = next(each for each in tables if each.plot == "memory.svg")
    rows = [[row[0], row[1].median / 1024, row[2].median / 1024] for row in table.rows]
    _draw(path, _block("data", rows) + f"""
set xlabel "size of the file"
set ylabel "peak memory in MiB"
set yrange [0:*]
plot $data using 2:xtic(1) with linespoints lc rgb "{COLOURS['library']}" title "library", \\
     $data using 3:xtic(1) with linespoints lc rgb "{COLOURS['bare']}" title "bare"
""")


def draw_all(recorder, tables, folder):
    cpu(recorder, folder / "cpu.svg")
    threads(recorder, tables, folder / "threads.svg")
    memory(tables, folder / "memory.svg")
