"""Where what a suite starts may run."""

import dataclasses
import os
import subprocess
import sys
import unittest

import machine
from loaded import driver


class Suite:
    """Notes which processors its server has, and which what it starts."""

    def suite(self, server, *_):
        words = ["import os; print(*os.sched_getaffinity(0))"]
        told = subprocess.run([sys.executable, "-c", *words], capture_output=True, text=True, check=True).stdout
        self.client = set(map(int, told.split()))
        self.server = os.sched_getaffinity(server._process.pid)
        return []


class Measure(unittest.TestCase):
    def test_each_suite_has_its_processors(self):
        for part, expected in {
            "users": {
                "user_operations": "everywhere",
                "user_large": "everywhere",
                "user_folders": "everywhere",
                "fixed": "everywhere",
                "user_limits": "everywhere",
            },
            "core": {
                "beside_bare": "together",
                "beside_tools": "apart",
                "sizes": "apart",
                "counts": "everywhere",
                "threads": "everywhere",
                "micro": "everywhere",
            },
            "sessions": {
                "session_cold": "apart",
                "session_warm": "apart",
                "session_folders": "everywhere",
                "session_large": "together",
                "session_quiet": "apart",
            },
            "command": {"command_trees": "everywhere"},
        }.items():
            suites = driver.PARTS[part].suites
            self.assertEqual(expected, {suite.__name__: where.__name__ for suite, where in suites.items()})

    def test_client_and_server_run_where_the_suite_places_them(self):
        before = os.sched_getaffinity(0)
        first = {min(before)}
        self.addCleanup(os.sched_setaffinity, 0, before)
        apart, everywhere = Suite(), Suite()
        part = dataclasses.replace(
            driver.PARTS["core"], suites={apart: machine.apart, everywhere: machine.everywhere}
        )
        driver.measure(part, os.environ["BENCH_BUILD"], None, None)
        self.assertEqual((first, before - first or first), (apart.client, apart.server))
        self.assertEqual((before, before), (everywhere.client, everywhere.server))


if __name__ == "__main__":
    unittest.main()
