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


@dataclasses.dataclass(frozen=True)
class Failure:
    """The exit status of a run that has failed, or has not had its effect, and which round it was in."""

    code: int
    number: int

    def __str__(self):
        return f"fails ({self.code})" + (f", round {self.number + 1}" if self.number > 0 else "")


def measure(build, command, environment):
    """Runs the command once. That it fails ends the whole benchmark: a failed transfer is a fast one."""
    run, code = spend(build, command, environment)
    if code != 0:
        words = [str(word) for word in command]
        raise RuntimeError(f"{words[0].rpartition('/')[2]} {' '.join(words[1:])} ended with {code}.")
    return run


def spend(build, command, environment):
    """What the command took, and its exit status."""
    words = [str(word) for word in command]
    done = subprocess.run(
        [f"{build}/bench/bench-spend", *words], env=environment, capture_output=True, text=True, check=False
    )
    if done.returncode != 0:
        raise RuntimeError(done.stderr.strip())
    wall, user, system, peak, code = done.stdout.split()
    return Run(float(wall), float(user), float(system), int(peak)), int(code)


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
            for name in self._turns(clients):
                self._keep(suite, work, name, number, measure(self.build, *clients[name]()), runs)
        return runs

    def alternate_able(self, suite, work, rounds, clients, done):
        """The same of clients that may fail: their first failure ends their runs, and stands in place of them. `done`
        looks whether a client's run has had its effect."""
        self.say(f"{suite}: {work}, {rounds} rounds")
        runs = {name: [] for name in clients}
        failed = {}
        for number in range(rounds):
            for name in self._turns(name for name in clients if name not in failed):
                run, code = spend(self.build, *clients[name]())
                if done(name) and code == 0:
                    self._keep(suite, work, name, number, run, runs)
                else:
                    failed[name] = Failure(code, number)
        return runs | failed

    def _turns(self, clients):
        names = list(clients)
        return self._draw.sample(names, len(names))

    def _keep(self, suite, work, name, number, run, runs):
        runs[name].append(run)
        self.rows.append([suite, work, name, number, run.wall, run.user, run.system, run.peak])
