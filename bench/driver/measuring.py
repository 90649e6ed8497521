"""Runs commands and keeps what each of them took."""

import dataclasses
import random
import subprocess


@dataclasses.dataclass(frozen=True)
class Run:
    """What one process took, in seconds and KiB."""

    wall: float
    user: float
    system: float
    peak: int

    @property
    def cpu(self):
        return self.user + self.system


def measure(build, command, environment):
    """Runs the command once. That it fails ends the whole benchmark: a failed transfer is a fast one."""
    words = [str(word) for word in command]
    done = subprocess.run(
        [f"{build}/bench/bench-spend", *words], env=environment, capture_output=True, text=True, check=False
    )
    if done.returncode != 0:
        raise RuntimeError(done.stderr.strip())
    wall, user, system, peak, code = done.stdout.split()
    if code != "0":
        raise RuntimeError(f"{words[0].rpartition('/')[2]} {' '.join(words[1:])} ended with {code}.")
    return Run(float(wall), float(user), float(system), int(peak))


class Recorder:
    """Measures in rounds, and keeps every single run for runs.csv."""

    HEAD = ["suite", "work", "client", "round", "wall s", "user s", "system s", "peak KiB"]

    def __init__(self, build, say):
        self.build = build
        self.say = say
        self.rows = []
        # The same draws in every benchmark.
        self._draw = random.Random(0)

    def alternate(self, suite, work, rounds, clients):
        """`clients` maps each name to what makes its command ready: a function that gives command and environment.
        Gives the runs of each, round by round. Their order within a round is drawn: what goes to and fro in the
        machine, such as the processor that a process gets, would always meet the same one."""
        self.say(f"{suite}: {work}, {rounds} rounds")
        runs = {name: [] for name in clients}
        for number in range(rounds):
            for name in self._draw.sample(list(clients), len(clients)):
                run = measure(self.build, *clients[name]())
                runs[name].append(run)
                self.rows.append([suite, work, name, number, run.wall, run.user, run.system, run.peak])
        return runs
