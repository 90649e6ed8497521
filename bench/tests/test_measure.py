"""Where what a suite starts may run."""

import importlib.util
import os
import pathlib
import subprocess
import sys
import unittest
from unittest import mock

import machine

_FILE = pathlib.Path(machine.__file__).with_name("__main__.py")
_ORIGIN = importlib.util.spec_from_file_location("driver", _FILE)
driver = importlib.util.module_from_spec(_ORIGIN)
sys.modules["driver"] = driver
_ORIGIN.loader.exec_module(driver)


class Suite:
    """Notes which processors its server has, and which what it starts."""

    def suite(self, server, *_):
        words = ["import os; print(*os.sched_getaffinity(0))"]
        told = subprocess.run([sys.executable, "-c", *words], capture_output=True, text=True, check=True).stdout
        self.client = set(map(int, told.split()))
        self.server = os.sched_getaffinity(server._process.pid)
        return []


class Measure(unittest.TestCase):
    def test_client_and_server_are_apart_where_one_call_is_measured(self):
        before = os.sched_getaffinity(0)
        first = {min(before)}
        self.addCleanup(os.sched_setaffinity, 0, before)
        one, many = Suite(), Suite()
        with mock.patch.object(driver, "SUITES", [one, many]), mock.patch.object(driver, "ONE_CALL_AT_A_TIME", [one]):
            driver.measure(os.environ["BENCH_BUILD"], None, None)
        self.assertEqual((first, before - first or first), (one.client, one.server))
        self.assertEqual((before, before), (many.client, many.server))


if __name__ == "__main__":
    unittest.main()
