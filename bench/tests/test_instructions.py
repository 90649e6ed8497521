"""How callgrind's counts are read and compared."""

import unittest

import callgrind
import instructions

# Two objects; the library's function calls one of the other, whose 70 are told where they are and with the call.
COUNTS = """\
events: Ir

ob=(1) /usr/bin/host
fl=(1) main.cpp
fn=(1) main
16 100
+2 20
cob=(2) /here/libSFtpClient.so.1
cfn=(2) list
calls=1 30
-3 77

ob=(2)
fn=(2)
30 5
* 2
cob=(1)
cfn=(3)
calls=1 12
31 70

ob=(1)
fn=(3) fwrite
0x1f 70

totals: 197
"""


class Callgrind(unittest.TestCase):
    def test_only_what_an_object_executes_itself_is_its_own(self):
        self.assertEqual(callgrind.Count(own=7, total=197), callgrind.parse(COUNTS.splitlines()))

    def test_costs_that_were_overlooked_are_noticed(self):
        self.assertRaises(ValueError, callgrind.parse, COUNTS.replace("197", "198").splitlines())

    def test_counts_that_end_before_their_total_are_noticed(self):
        self.assertRaises(ValueError, callgrind.parse, COUNTS.replace("totals: 197\n", "").splitlines())


class Comparison(unittest.TestCase):
    def test_two_per_cent_more_are_let_pass(self):
        self.assertEqual([], instructions.complaints({"list": 1000, "rename": 50}, {"list": 1020, "rename": 1}))

    def test_more_is_told_with_the_operation_and_by_how_much(self):
        self.assertEqual(
            ["list: 1,021 instructions, +2.1% over the 1,000 that are kept"],
            instructions.complaints({"list": 1000, "rename": 50}, {"list": 1021, "rename": 50}),
        )

    def test_an_operation_that_is_not_counted_any_more_is_told(self):
        self.assertEqual(["Kept are list; counted were rename."], instructions.complaints({"list": 1}, {"rename": 1}))

    def test_the_kept_numbers_are_there_for_every_operation(self):
        kept = instructions.read_kept()
        self.assertEqual(6, len(kept))
        self.assertGreater(min(kept.values()), 0)


if __name__ == "__main__":
    unittest.main()
