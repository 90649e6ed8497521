"""What is made of single measurements: medians, ratios of runs side by side, and how they stand to a goal."""

import dataclasses
import math
import statistics
from typing import ClassVar


RATIO = "{:.3f} ({:.2f}–{:.2f})"
DIFFERENCE = "{:+.0f} ({:+.0f} to {:+.0f})"
AMOUNT = "{:.0f} ({:.0f}–{:.0f})"


@dataclasses.dataclass(frozen=True)
class Spread:
    """The median of some figures, with the least and the greatest of them, and with the two between which the median of
    very many would lie, 19 times out of 20: anywhere, where they are too few to say."""

    median: float
    least: float
    greatest: float
    low: float
    high: float
    form: str = RATIO
    FIGURES: ClassVar = ["", "least", "greatest", "19 of 20 from", "19 of 20 to"]

    @staticmethod
    def of(figures, form=RATIO):
        figures = sorted(figures)
        left_out = outside(len(figures))
        low, high = -math.inf, math.inf
        if left_out is not None:
            low, high = figures[left_out], figures[len(figures) - 1 - left_out]
        return Spread(statistics.median(figures), figures[0], figures[-1], low, high, form)

    def __str__(self):
        return self.form.format(self.median, self.least, self.greatest)

    def cells(self):
        """What a spreadsheet shows in cells of their own."""
        margins = ("" if math.isinf(end) else end for end in (self.low, self.high))
        return [self.median, self.least, self.greatest, *margins]


def outside(count):
    """How many figures at each end can be left out: as many as are all on one side of the true median by chance, like
    coins, at most once in 40 times. None of fewer than six, which are all on one side more often than that."""
    number, chance = 0, 0.5**count
    while chance <= 0.025:
        number += 1
        chance += math.comb(count, number) * 0.5**count
    return number - 1 if number > 0 else None


def ratios(numerators, denominators, form=RATIO):
    """Each round's ratio: what disturbs a round disturbs both of its runs, and a ratio of medians would not know."""
    if len(numerators) != len(denominators):
        raise ValueError(f"{len(numerators)} runs do not pair with {len(denominators)}.")
    return Spread.of((above / below for above, below in zip(numerators, denominators)), form)


def per_unit(small, large, units):
    """What one further unit takes, from a run with few and a run with so many more."""
    return (large - small) / units


MET, UNDECIDED, MISSED = "met", "undecided", "NOT MET"


@dataclasses.dataclass
class Goals:
    """Goals that figures are held to, and what came of it."""

    judged: list = dataclasses.field(default_factory=list)

    def judge(self, goal, subject, met):
        return self._note(goal, subject, MET if met else MISSED)

    def judge_spread(self, goal, subject, spread, least=-math.inf, greatest=math.inf):
        """Met where all that the true median may be, 19 times out of 20, is within the goal; missed where none is."""
        if least <= spread.low and spread.high <= greatest:
            return self._note(goal, subject, MET)
        return self._note(goal, subject, UNDECIDED if spread.low <= greatest and spread.high >= least else MISSED)

    def _note(self, goal, subject, verdict):
        self.judged.append((goal, subject, verdict))
        return verdict

    def summary(self):
        """One row a goal, in the order in which they were judged first: how many met it, and who did not."""
        rows = []
        for goal in dict.fromkeys(goal for goal, _, _ in self.judged):
            of_goal = [(subject, verdict) for each, subject, verdict in self.judged if each == goal]
            verdicts = (MET, UNDECIDED, MISSED)
            by = {each: [subject for subject, verdict in of_goal if verdict == each] for each in verdicts}
            others = (", ".join(by[each]) or "–" for each in (UNDECIDED, MISSED))
            rows.append([goal, f"{len(by[MET])} of {len(of_goal)}", *others])
        return rows
