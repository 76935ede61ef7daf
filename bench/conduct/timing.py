# SPDX-License-Identifier: MIT
"""Timing of several programs in turn, so that a machine which slows down for a while slows all of them."""
import dataclasses
import math
import time
import typing

BURST_MS = 20  # of runs one after the other, with the caches warm


@dataclasses.dataclass
class Cell:
    """What one program does in one row of a table."""
    run: typing.Callable  # answers milliseconds, or None when it cannot be run
    patience: float       # milliseconds that its runs may take together, with everything around them
    least: float = math.inf
    spent: float = 0
    runs: int = 0
    gone: bool = False


def run_once(cell, counts):
    start = time.perf_counter()
    took = cell.run()
    cell.spent += (time.perf_counter() - start) * 1e3
    if took is None:
        cell.gone = True
    elif counts or cell.spent > cell.patience:
        cell.least = min(cell.least, took)
        cell.runs += 1


def warm(cell):
    """A first run, which makes everything ready. It counts where it takes so long that there will be no other one."""
    run_once(cell, False)


def take_turn(cell):
    """Some runs, if the cell may have more; answers whether it had."""
    if cell.gone or (cell.runs and cell.spent >= cell.patience):
        return False
    until = cell.spent + BURST_MS
    while True:
        run_once(cell, True)
        if cell.gone or cell.spent >= until or cell.spent >= cell.patience:
            return True


def take_turns(cells, between):
    """Goes over the cells, which are warm, until none may have more; `between` is called after each round."""
    going = True
    while going:
        going = any([take_turn(cell) for cell in cells])
        between()
