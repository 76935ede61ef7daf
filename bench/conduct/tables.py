# SPDX-License-Identifier: MIT
"""Numbers and tables in Markdown."""
import math


def number(value):
    if value is None or not math.isfinite(value):
        return "–"
    digits = 3 if value < 1 else 2 if value < 10 else 1 if value < 100 else 0
    return f"{value:.{digits}f}"


def ratio(value, by):
    """As a number; nan where one of the two is missing."""
    return value / by if value is not None and by else math.nan


def mean_of(ratios):
    """Geometric, of those that are there."""
    known = [value for value in ratios if math.isfinite(value) and value > 0]
    return math.exp(sum(map(math.log, known)) / len(known)) if known else math.nan


def table_of(columns, rows):
    """`columns`: (head, whether it holds text)."""
    lines = [[head for head, _ in columns], ["---" if text else "---:" for _, text in columns], *rows]
    return "\n".join("| " + " | ".join(line) + " |" for line in lines)
