"""Which processors the client and the server get."""

import unittest
from unittest import mock

import machine


def having(processors):
    return mock.patch.object(machine, "_PROCESSORS", processors)


class Processors(unittest.TestCase):
    def test_apart_they_share_none(self):
        with having({1, 2, 3}):
            self.assertEqual(({1}, {2, 3}), machine.processors(apart=True))

    def test_together_they_share_all(self):
        with having({1, 2, 3}):
            self.assertEqual(({1, 2, 3}, {1, 2, 3}), machine.processors(apart=False))

    def test_a_single_one_is_shared(self):
        with having({1}):
            self.assertEqual(({1}, {1}), machine.processors(apart=True))


if __name__ == "__main__":
    unittest.main()
