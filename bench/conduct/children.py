# SPDX-License-Identifier: MIT
"""Programs that run jobs when they are asked to, by the line protocol of bench/child.h."""
import dataclasses
import shlex
import subprocess


class Failed(Exception):
    """A child cannot be used; the text says why."""


@dataclasses.dataclass
class Child:
    name: str
    process: subprocess.Popen
    numbers: dict = dataclasses.field(default_factory=dict)  # of its items, by (job, variant)
    items: list = dataclasses.field(default_factory=list)


@dataclasses.dataclass(frozen=True)
class Item:
    number: str
    job: str
    variant: str
    operation: str
    works_on: str  # "picture", "animation"; "": not said


def ask(child, question):
    """The first line of the answer."""
    try:
        child.process.stdin.write(question + "\n")
        child.process.stdin.flush()
    except OSError:
        return ""
    return next_line(child)


def next_line(child):
    return child.process.stdout.readline().rstrip("\r\n")


def ask_list(child, question):
    """The lines of the answer before "end", split at tabs."""
    lines = []
    line = ask(child, question)
    while line not in ("", "end"):
        lines.append(line.split("\t"))
        line = next_line(child)
    if line != "end":
        raise Failed(f'{child.name} ended while it was asked for "{question}".')
    return lines


def start(name, command, shots):
    """Starts a child, hands it the shots and asks what it can do. `shots`: lines as "W1 640 480 1 PATH"."""
    process = subprocess.Popen(shlex.split(command), stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                               stderr=subprocess.DEVNULL, text=True)
    child = Child(name, process)
    for shot in shots:
        if ask(child, "frame " + shot) != "ok":
            stop(child)
            raise Failed(f"{name} did not take its frames: {command}")
    try:
        offered = ask_list(child, "list")
    except Failed:
        stop(child)
        raise
    for line in offered:
        if line[0] == "item" and len(line) >= 5:
            item = Item(*line[1:5], line[5] if len(line) > 5 else "")
            child.items.append(item)
            child.numbers.setdefault((item.job, item.variant), []).append(item)
    return child


def run(child, item, shot):
    """Milliseconds of one run; None when the child cannot run it."""
    answer = ask(child, f"run {item.number} {shot}").split()
    return float(answer[1]) if len(answer) == 2 and answer[0] == "ms" else None


def stop(child):
    """Ends the child, which may have ended already."""
    try:
        child.process.stdin.write("quit\n")
        child.process.stdin.close()
    except OSError:
        pass
    child.process.stdout.read()
    child.process.stdout.close()
    child.process.wait()
