"""The arithmetic behind the tables."""

import math
import statistics
import unittest

import figures


class Spreads(unittest.TestCase):
    def test_an_odd_number_has_one_in_the_middle(self):
        self.assertEqual(figures.Spread(4, 1, 9, 1, 9), figures.Spread.of([9, 1, 4, 6, 3, 2, 7]))

    def test_an_even_number_has_the_mean_of_two(self):
        self.assertEqual(figures.Spread(2.5, 1, 9, 1, 9), figures.Spread.of([9, 1, 3, 2, 1, 4]))

    def test_chance_leaves_out_as_many_as_the_tables_of_the_sign_test_say(self):
        self.assertEqual([0, 0, 1, 5, 6, 16], [figures.outside(count) for count in (6, 8, 9, 20, 24, 48)])

    def test_fewer_than_six_can_all_be_on_one_side(self):
        self.assertEqual([None] * 5, [figures.outside(count) for count in range(1, 6)])
        spread = figures.Spread.of([1, 1, 1, 1, 1])
        self.assertEqual((-math.inf, math.inf), (spread.low, spread.high))
        self.assertEqual([1, 1, 1, "", ""], spread.cells())

    def test_with_enough_runs_the_ends_do_not_count(self):
        spread = figures.Spread.of(range(24))
        self.assertEqual((0, 6, 11.5, 17, 23), (spread.least, spread.low, spread.median, spread.high, spread.greatest))

    def test_none_at_all_is_no_figure(self):
        self.assertRaises(statistics.StatisticsError, figures.Spread.of, [])

    def test_it_is_written_with_its_ends(self):
        self.assertEqual("1.004 (0.97–1.10)", str(figures.Spread(1.0042, 0.972, 1.1, 1, 1)))
        self.assertEqual("+4 (-9 to +12)", str(figures.Spread.of([4, -9, 12], figures.DIFFERENCE)))


class Ratios(unittest.TestCase):
    def test_each_round_has_a_ratio_of_its_own(self):
        # Of the medians, 2 / 2, it would be 1.
        spread = figures.ratios([2, 20, 1], [1, 10, 2])
        self.assertEqual((2, 0.5, 2), (spread.median, spread.least, spread.greatest))

    def test_runs_without_a_partner_are_refused(self):
        self.assertRaises(ValueError, figures.ratios, [1, 2], [1])

    def test_a_further_unit_is_what_is_left_without_the_first(self):
        self.assertEqual(128, figures.per_unit(3847, 11911, 63))


class GoalsTest(unittest.TestCase):
    def test_the_summary_names_who_missed(self):
        goals = figures.Goals()
        self.assertEqual("met", goals.judge("small", "a", True))
        self.assertEqual("NOT MET", goals.judge("small", "b", False))
        goals.judge("fast", "a", True)
        self.assertEqual([["small", "1 of 2", "–", "b"], ["fast", "1 of 1", "–", "–"]], goals.summary())

    def test_a_goal_is_decided_only_where_no_part_of_the_interval_is_on_its_other_side(self):
        goals = figures.Goals()
        for subject, median, low, high in [
            ("inside", 1, 0.99, 1.01),
            ("beyond above", 1, 0.99, 1.011),
            ("beyond below", 1, 0.989, 1.01),
            ("touches from above", 1.02, 1.01, 1.2),
            ("above", 1.02, 1.011, 1.2),
            ("touches from below", 0.98, 0.9, 0.99),
            ("below", 0.98, 0.9, 0.989),
        ]:
            goals.judge_spread("near", subject, figures.Spread(median, 0, 2, low, high), 0.99, 1.01)
        undecided = "beyond above, beyond below, touches from above, touches from below"
        self.assertEqual([["near", "1 of 7", undecided, "above, below"]], goals.summary())

    def test_five_rounds_decide_nothing_and_six_do(self):
        def verdicts(figure):
            spreads = [figures.Spread.of([figure] * count) for count in (5, 6)]
            return [figures.Goals().judge_spread("", "", spread, greatest=2) for spread in spreads]

        self.assertEqual(["undecided", "met"], verdicts(1))
        self.assertEqual(["undecided", "NOT MET"], verdicts(3))


if __name__ == "__main__":
    unittest.main()
