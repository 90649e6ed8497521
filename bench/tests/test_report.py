"""Tables as they are written, and as they are kept in the document."""

import unittest

import report
from beside_tools import Took
from figures import Spread
from measuring import Run

TABLE = report.Table("Title", "What it says.", ["operation", "ratio"], [["list", "1.00"], ["a, b", 2]], plot="cpu.svg")


class Report(unittest.TestCase):
    def test_markdown(self):
        self.assertEqual(
            "### Title\n\nWhat it says.\n\n| operation | ratio |\n|---|---:|\n| list | 1.00 |\n| a, b | 2 |\n\n"
            "![Title](performance/cpu.svg)\n",
            report.markdown(TABLE),
        )

    def test_terminal(self):
        self.assertEqual("\nTitle\n  operation  ratio\n  list        1.00\n  a, b           2", report.terminal(TABLE))

    def test_comma_separated(self):
        self.assertEqual(
            'Title,operation,ratio\nTitle,list,1.00\nTitle,"a, b",2\n', report.comma_separated([TABLE])
        )

    def test_each_figure_has_a_cell_of_its_own_in_a_spreadsheet(self):
        rows = [["list", Spread.of(range(24)), "met"], ["rm", "–", ""]]
        table = report.Table("Title", "", ["work", "ratio", "goal"], rows)
        self.assertEqual(
            'Title,work,ratio,"ratio, least","ratio, greatest","ratio, 19 of 20 from","ratio, 19 of 20 to",goal\n'
            "Title,list,11.5,0,23,6,17,met\nTitle,rm,–,,,,,\n",
            report.comma_separated([table]),
        )
        runs = [Run(1.0, 0.25, 0.125, 2048), Run(3.0, 0.75, 0.375, 4096)]
        self.assertEqual(
            'Title,work,"lftp, wall s","lftp, user s","lftp, system s","lftp, peak MiB"\nTitle,rm,2.0,0.5,0.25,3.0\n',
            report.comma_separated([report.Table("Title", "", ["work", "lftp"], [["rm", Took.of(runs)]])]),
        )
        self.assertEqual("2.000 / 0.500 / 0.250, 3.0", str(Took.of(runs)))

    def test_what_stands_around_the_measured_part_is_kept(self):
        begin, end = report.marks("core")
        document = f"above\n{begin}\nold\n{end}\nbelow\n"
        once = report.put_between_marks(document, "new\n", "core")
        self.assertEqual(f"above\n{begin}\n\nnew\n\n{end}\nbelow\n", once)
        self.assertEqual(once, report.put_between_marks(once, "new", "core"))

    def test_a_document_without_marks_is_left_alone(self):
        other = "\n".join(report.marks("sessions"))
        for document in ("above\n", other):
            self.assertRaises(ValueError, report.put_between_marks, document, "new", "core")


if __name__ == "__main__":
    unittest.main()
