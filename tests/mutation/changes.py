# SPDX-License-Identifier: MIT
"""Small changes of C++ sources, each of which a test should notice.

The sources are formatted: a binary operator stands between spaces, and `<` without them opens template arguments.
"""

import re
from typing import Iterator, NamedTuple


class Change(NamedTuple):
    path: str  # from the root of the sources
    line: int  # from 1
    column: int  # from 0
    old: str
    new: str

    def __str__(self):
        return f"{self.path}:{self.line}:{self.column + 1}: `{self.old}` -> `{self.new}`"


OPERATORS = {
    "<": ["<=", ">="],
    "<=": ["<", ">"],
    ">": [">=", "<="],
    ">=": [">", "<"],
    "==": ["!="],
    "!=": ["=="],
    "+": ["-"],
    "-": ["+"],
    "*": ["/"],
    "/": ["*"],
    "%": ["/"],
    "&&": ["||"],
    "||": ["&&"],
    "&": ["|"],
    "|": ["&"],
    "<<": [">>"],
    ">>": ["<<"],
    "+=": ["-="],
    "-=": ["+="],
}
OPERATOR = re.compile(r"(?<=\s)(" + "|".join(re.escape(o) for o in sorted(OPERATORS, key=len, reverse=True)) + r")(?=\s|$)")
NUMBER = re.compile(r"(?<![\w.'])(0x[0-9A-Fa-f]+|\d+\.\d+|0|[1-9]\d*)(?![\w.'])")
WORD = re.compile(r"\b(true|false)\b")
CONDITION = re.compile(r"\b(if|while) \((?!const |auto |void )")
NEGATION = re.compile(r"(?<![\w)])!(?=[\w(])")

# What a program's behaviour does not depend on: proofs at compile time, included files, attributes.
PASSED_OVER = re.compile(r"^\s*(#|static_assert|namespace|using |template|extern |friend |\[\[)")


def blank_out(text: str) -> str:
    """The text with comments, strings and characters replaced by as many spaces."""
    pattern = re.compile(r'//[^\n]*|/\*.*?\*/|R"\((?:.|\n)*?\)"|"(?:\\.|[^"\\\n])*"|(?<!\d)\'(?:\\.|[^\'\\\n])+\'', re.S)
    return pattern.sub(lambda found: re.sub(r"[^\n]", " ", found.group()), text)


def other_numbers(text: str) -> list[str]:
    if "." in text:
        return [str(float(text) + 1)]
    value = int(text, 0)
    write = hex if text.startswith("0x") else str
    return [write(value + 1)] + ([write(value - 1)] if value > 0 else [])


def closing(line: str, at: int) -> int:
    """The place of the bracket that closes the one before `at`; -1: on a later line."""
    depth = 1
    for i in range(at, len(line)):
        depth += {"(": 1, ")": -1}.get(line[i], 0)
        if depth == 0:
            return i
    return -1


def changes_of_line(line: str) -> Iterator[tuple[int, str, str]]:
    for found in OPERATOR.finditer(line):
        for new in OPERATORS[found.group()]:
            yield found.start(), found.group(), new
    for found in NUMBER.finditer(line):
        for new in other_numbers(found.group()):
            yield found.start(), found.group(), new
    for found in WORD.finditer(line):
        yield found.start(), found.group(), {"true": "false", "false": "true"}[found.group()]
    for found in NEGATION.finditer(line):
        yield found.start(), "!", ""
    for found in CONDITION.finditer(line):
        end = closing(line, found.end())
        condition = line[found.end():end]
        if end > 0 and ";" not in condition and found.group(1) == "if":
            yield found.end(), condition, f"!({condition})"


def changes_of(path: str, text: str) -> Iterator[Change]:
    in_assertion = False
    for number, line in enumerate(blank_out(text).splitlines(), 1):
        if in_assertion or PASSED_OVER.match(line):
            in_assertion = (in_assertion or "static_assert" in line) and not line.rstrip().endswith(";")
            continue
        for column, old, new in changes_of_line(line):
            yield Change(path, number, column, old, new)


def apply(text: str, change: Change) -> str:
    lines = text.splitlines(keepends=True)
    line = lines[change.line - 1]
    assert line[change.column:].startswith(change.old), change
    lines[change.line - 1] = line[:change.column] + change.new + line[change.column + len(change.old):]
    return "".join(lines)
