# SPDX-License-Identifier: MIT
"""The table of jobs: the product natively and under Wine, its literal references, peers, and the machine's limits."""
import dataclasses
import os
import sys

import children
import peers
from tables import mean_of, number, ratio, table_of
from timing import Cell, take_turns, warm

OWN = ("native", "Wine", "reference")
SMALL_OF = {"W2": "W1", "A2": "A1"}  # of each large shot


@dataclasses.dataclass(frozen=True)
class Shot:
    """Frames that jobs work on, as bench_child --frames writes them."""
    name: str
    width: int
    height: int
    frames: int
    works_for: str  # "picture", "animation"
    path: str
    gif: str  # the same as a file; empty: there is none

    def line(self):
        return f"{self.name} {self.width} {self.height} {self.frames} {self.path}"

    def size(self):
        return f"{self.width} x {self.height}"

    def pixels(self):
        return self.width * self.height * self.frames


@dataclasses.dataclass
class Row:
    item: children.Item
    shot: Shot
    cells: dict  # by the program's name


def shots_in(folder, small, large):
    def shot(name, size, frames, works_for, gif=""):
        return Shot(name, *size, frames, works_for, f"{folder}/{name}.bgr", gif)
    return [shot("W1", small, 1, "picture"), shot("W2", large, 1, "picture"),
            shot("A1", small, 8, "animation", f"{folder}/A1.gif"), shot("A2", large, 2, "animation")]


def peer_items(child, item):
    """What a peer has for this row: nothing that is only a part of the job ("~"). What keeps its coordinates from an
    earlier frame ("^") is for later frames."""
    if item.variant == "later":
        return [found for found in child.numbers.get((item.job, "default"), []) if found.operation[:1] == "^"]
    return [found for found in child.numbers.get((item.job, item.variant), []) if found.operation[:1] not in ("^", "~")]


def cells_of(programs, commands, item, shot, patience):
    cells = {}

    def add(name, run):
        cells[name] = Cell(run, patience["reference" if name == "reference" else "each"])

    def asked(child, found):
        return lambda: children.run(child, found, shot.name)

    for child in programs:
        if child.name in OWN:
            for found in child.numbers.get((item.job, item.variant), [])[:1]:
                add(child.name, asked(child, found))
        else:
            for found in peer_items(child, item):
                add(f"{child.name}: {found.operation.lstrip('^')}", asked(child, found))
    for name, run in commands.items():
        if item.variant != "later":
            add(name, lambda run=run: run(item, shot))
    return cells


def warm_all(rows, patience):
    """A literal reference that takes long is not run on large shots."""
    small = {}
    for row in sorted(rows, key=lambda row: row.shot.name in SMALL_OF):
        before = small.get((row.item, SMALL_OF.get(row.shot.name)))
        share = row.shot.pixels() / before.shot.pixels() if before else 0
        if share and before.cells["reference"].spent * share > patience["reference"]:
            row.cells.pop("reference", None)
        for cell in row.cells.values():
            warm(cell)
        if "reference" in row.cells:
            small[row.item, row.shot.name] = row


def title_of(item):
    """Effects are named by what is done; other jobs do one thing in several ways."""
    if item.variant == "later" or item.operation[:1].isupper():
        return item.operation
    return f"{item.job}: {item.operation}"


def measured(native, row):
    """The row's figures in milliseconds a frame, by name."""
    frames = row.shot.frames if row.item.works_on == "animation" else 1
    figures = {name: cell.least / frames for name, cell in row.cells.items() if cell.runs}
    others = {name: value for name, value in figures.items() if name not in OWN}
    figures["best"] = min(others, key=others.get) if others else None
    bound = children.ask(native, f"bound {row.item.number} {row.shot.name}").split("\t")
    figures["limit"], figures["by"] = (float(bound[1]), bound[2]) if len(bound) == 3 else (None, "–")
    return figures


COLUMNS = (("job", True), ("size", True), ("native", False), ("Wine", False), ("reference", False), ("best peer", True),
           ("its ms", False), ("native / peer", False), ("limit", False), ("native / limit", False),
           ("limited by", True))


def cells_in(row, figures):
    own, best, limit = figures.get("native"), figures["best"], figures["limit"]
    return [title_of(row.item), row.shot.size(), number(own), number(figures.get("Wine")),
            number(figures.get("reference")), best or "–", number(figures.get(best)),
            number(ratio(own, figures.get(best))), number(limit), number(ratio(own, limit)), figures["by"]]


def means_text(rows, table):
    texts = []
    for what, over, under in (("native / best peer", "native", None), ("Wine / native", "Wine", "native"),
                              ("native / limit", "native", "limit"), ("reference / native", "reference", "native")):
        means = []
        for size in dict.fromkeys(row.shot.size() for row in rows):
            mean = mean_of([ratio(figures.get(over), figures.get(under or figures["best"]))
                            for row, figures in zip(rows, table) if row.shot.size() == size])
            means.append(f"{number(mean)} at {size}")
        texts.append(f"{what} {', '.join(means)}")
    return "Geometric means: " + "; ".join(texts) + "."


def limits_text(limits, shots):
    sizes = {shot.name: shot.size() for shot in shots}
    copied = [f"bytes copied {float(rate):.3g} ({sizes[name]})" for name in ("W1", "W2")
              for _, what, rate in limits[name] if what == "bytes copied"]
    others = [f"{what} {float(rate):.3g}" for _, what, rate in limits["W1"] if what != "bytes copied"]
    return ("What this machine did in the same run, operations a nanosecond, lanes counted one by one: " +
            ", ".join(copied + others) + ".")


def text_of(programs, commands, shots, only, patience):
    native = programs[0]
    rows = [Row(item, shot, cells_of(programs, commands, item, shot, patience))
            for item in native.items for shot in shots
            if shot.works_for == item.works_on and only in item.job]
    limits = {}

    def measure_limits():
        for shot in shots:
            limits[shot.name] = children.ask_list(native, "limits " + shot.name)

    warm_all(rows, patience)
    take_turns([cell for row in rows for cell in row.cells.values()], measure_limits)
    table = [measured(native, row) for row in rows]
    names = sorted({name.split(":")[0] for row in rows for name, cell in row.cells.items() if cell.runs} - set(OWN))
    return "\n\n".join([
        "Milliseconds a frame, the least of some runs in turn. "
        f"Peers that were installed: {', '.join(names) or 'none'}.",
        table_of(COLUMNS, [cells_in(row, figures) for row, figures in zip(rows, table)]),
        means_text(rows, table), limits_text(limits, shots)])


def make(arguments, folder):
    """The section's text."""
    os.sched_setaffinity(0, {max(arguments.processors)})
    shots = shots_in(folder, arguments.size, arguments.large)
    patience = {"each": 30, "reference": 100} if arguments.quick else {"each": 200, "reference": 300}
    if arguments.patience is not None:
        patience = dict.fromkeys(patience, arguments.patience)
    own = {"native": arguments.native, "Wine": arguments.wine, "reference": arguments.reference}
    others = {} if arguments.no_peers else peers.installed_children()
    others |= dict(text.split("=", 1) for text in arguments.child)
    programs = []
    try:
        for name, command in (own | others).items():
            if not command:
                continue
            try:
                programs.append(children.start(name, command, [shot.line() for shot in shots]))
            except children.Failed as error:
                if name in OWN:
                    raise
                print(f"{error} {name} is left out.", file=sys.stderr)
        commands = {} if arguments.no_peers else peers.installed_commands()
        return text_of(programs, commands, shots, arguments.only, patience)
    finally:
        for child in programs:
            children.stop(child)
