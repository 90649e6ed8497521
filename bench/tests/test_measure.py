"""Where what a suite starts may run."""

import os
import subprocess
import sys
import unittest
from unittest import mock

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
        placed = {suite.__name__: where.__name__ for suite, where in driver.SUITES.items()}
        expected = {"beside_bare": "together", "beside_tools": "apart", "sizes": "apart", "fixed": "apart"}
        anywhere = {"counts": "everywhere", "threads": "everywhere", "micro": "everywhere"}
        self.assertEqual({**expected, **anywhere}, placed)

    def test_client_and_server_run_where_the_suite_places_them(self):
        before = os.sched_getaffinity(0)
        first = {min(before)}
        self.addCleanup(os.sched_setaffinity, 0, before)
        apart, everywhere = Suite(), Suite()
        with mock.patch.object(driver, "SUITES", {apart: machine.apart, everywhere: machine.everywhere}):
            driver.measure(os.environ["BENCH_BUILD"], None, None)
        self.assertEqual((first, before - first or first), (apart.client, apart.server))
        self.assertEqual((before, before), (everywhere.client, everywhere.server))


if __name__ == "__main__":
    unittest.main()
