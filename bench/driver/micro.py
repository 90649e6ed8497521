"""Suite: the pieces of the library's own code, timed by Google Benchmark."""

import json
import subprocess

from report import Table

PIECES = {
    "functionName": "a function's short name",
    "logRecord": "a log record, composed and dropped",
    "headerLine": "a header line taken apart",
    "statusLine": "a status line taken apart",
    "certificateHook": "the certificate hook: PEM to trust anchor",
    "writeData": "16 KiB handed to a local file (/dev/null)",
}


def run(build, *options):
    command = [f"{build}/bench/bench-micro", "--benchmark_format=json", *options]
    done = subprocess.run(command, capture_output=True, text=True, check=True)
    return {each["name"]: each for each in json.loads(done.stdout)["benchmarks"]}


def suite(server, recorder, goals, effort):
    recorder.say("micro-benchmarks")
    found = run(
        server.build,
        f"--benchmark_repetitions={effort.micro_repetitions}",
        "--benchmark_report_aggregates_only=true",
        "--benchmark_min_time=0.1",
    )
    table = Table(
        "Pieces of the library",
        f"CPU time of one call in ns: median and standard deviation of {effort.micro_repetitions} repetitions.",
        ["piece", "median", "deviation"],
    )
    for name, piece in PIECES.items():
        figures = (found[f"{name}_{what}"]["cpu_time"] for what in ("median", "stddev"))
        table.rows.append([piece, *(f"{figure:,.1f}" for figure in figures)])
    return [table]
