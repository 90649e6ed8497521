"""Which processors the client and the server get, and how many files they may open."""

import pathlib
import resource
import tempfile
import unittest
from unittest import mock

import machine


def having(processors):
    return mock.patch.object(machine, "_PROCESSORS", processors)


class Processors(unittest.TestCase):
    def test_everywhere_is_what_this_process_has(self):
        with having({1, 2, 3}):
            self.assertEqual(({1, 2, 3}, {1, 2, 3}), machine.everywhere())

    def test_together_they_share_one(self):
        with having({1, 2, 3}):
            self.assertEqual(({1}, {1}), machine.together())

    def test_apart_they_share_none(self):
        with having({1, 2, 3}):
            self.assertEqual(({1}, {2, 3}), machine.apart())

    def test_a_single_one_is_shared(self):
        with having({1}):
            self.assertEqual(({1}, {1}), machine.apart())


class Description(unittest.TestCase):
    def test_it_counts_the_certificates(self):
        with tempfile.NamedTemporaryFile("w") as bundle:
            bundle.write(2 * "-----BEGIN CERTIFICATE-----\nAAAA\n-----END CERTIFICATE-----\n")
            bundle.flush()
            described = dict(machine.describe("0.71", "/dev/shm", pathlib.Path(bundle.name)))
        self.assertEqual(2, described["certificates in the trust store"])
        self.assertEqual(("/dev/shm", "0.71"), (described["the server's files"], described["load before"]))


class Files(unittest.TestCase):
    def limits_after(self, now, most):
        """What the limits are set to where they are these; None where they are left alone."""
        with mock.patch("resource.getrlimit", return_value=(now, most)), mock.patch("resource.setrlimit") as set_to:
            machine.allow_many_files()
        return set_to.call_args and set_to.call_args.args[1]

    def test_a_low_limit_is_raised(self):
        self.assertEqual((4096, 524288), self.limits_after(1024, 524288))
        self.assertEqual((4096, resource.RLIM_INFINITY), self.limits_after(1024, resource.RLIM_INFINITY))

    def test_a_limit_that_suffices_is_left_alone(self):
        self.assertIsNone(self.limits_after(4096, 4096))
        self.assertIsNone(self.limits_after(resource.RLIM_INFINITY, resource.RLIM_INFINITY))

    def test_one_that_cannot_be_raised_is_told(self):
        with self.assertRaisesRegex(RuntimeError, "only 1024 files .* ulimit -Hn 4096"):
            self.limits_after(1024, 1024)


if __name__ == "__main__":
    unittest.main()
