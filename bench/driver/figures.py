"""What is made of single measurements: medians, ratios of runs side by side, and how they stand to a goal."""

import dataclasses
import statistics


@dataclasses.dataclass(frozen=True)
class Spread:
    """The median of some figures, with the least and the greatest of them."""

    median: float
    least: float
    greatest: float

    @staticmethod
    def of(figures):
        figures = list(figures)
        return Spread(statistics.median(figures), min(figures), max(figures))

    def __str__(self):
        return f"{self.median:.3f} ({self.least:.2f}–{self.greatest:.2f})"


def ratios(numerators, denominators):
    """Each round's ratio: what disturbs a round disturbs both of its runs, and a ratio of medians would not know."""
    if len(numerators) != len(denominators):
        raise ValueError(f"{len(numerators)} runs do not pair with {len(denominators)}.")
    return Spread.of(above / below for above, below in zip(numerators, denominators))


def per_unit(small, large, units):
    """What one further unit takes, from a run with few and a run with so many more."""
    return (large - small) / units


@dataclasses.dataclass
class Goals:
    """Goals that figures are held to, and what came of it."""

    judged: list = dataclasses.field(default_factory=list)

    def judge(self, goal, subject, met):
        self.judged.append((goal, subject, met))
        return "met" if met else "NOT MET"

    def summary(self):
        """One row a goal, in the order in which they were judged first: goal, how many met it, and who did not."""
        rows = []
        for goal in dict.fromkeys(goal for goal, _, _ in self.judged):
            of_goal = [(subject, met) for each, subject, met in self.judged if each == goal]
            missed = [subject for subject, met in of_goal if not met]
            rows.append([goal, f"{len(of_goal) - len(missed)} of {len(of_goal)}", ", ".join(missed) or "–"])
        return rows
