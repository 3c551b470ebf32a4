"""One measured program, asked by lines over a pipe."""
import json
import os
import statistics
import subprocess

CORES = 2


def pin():
    """Two cores for everybody, whatever the machine has."""
    os.sched_setaffinity(0, sorted(os.sched_getaffinity(0))[:CORES])


class Contestant:
    def __init__(self, program, command="frame", **options):
        arguments = [text for name, value in options.items() for text in (f"--{name.replace('_', '-')}", str(value))]
        self.command = command
        self.process = subprocess.Popen([program, *arguments], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
                                        bufsize=1, preexec_fn=pin)

    def ask(self, command=None):
        self.process.stdin.write((command or self.command) + "\n")
        answer = self.process.stdout.readline()
        if not answer:
            raise SystemExit(f"{self.process.args[0]} ended without an answer")
        return json.loads(answer)

    def close(self):
        self.process.stdin.close()
        self.process.wait()


def summary(values):
    values = sorted(values)
    return {"median": statistics.median(values), "least": values[0], "most": values[-1]}


def take_turns(contestants, rounds, repeats=3):
    """Medians of every figure.  In each turn the first run is not counted: it finds the others' data in the caches."""
    figures = {name: {} for name in contestants}
    for _ in range(rounds):
        for name, contestant in contestants.items():
            contestant.ask()
            for _ in range(repeats):
                for figure, value in contestant.ask().items():
                    figures[name].setdefault(figure, []).append(value)
    return {name: {figure: summary(values) for figure, values in taken.items()} for name, taken in figures.items()}
