#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Prints which part of the sources a test run has executed.

usage: report_coverage.py ROOT BUILD [FILE_REGEX]

BUILD is a tree of the preset `coverage` in which the tests have run with LLVM_PROFILE_FILE in BUILD/profiles. Without
FILE_REGEX: a table of the folders and the files that are covered least. With it: the lines of the matching files that
were not executed, and the conditions that had only one outcome. BUILD/coverage.json keeps the whole of the first.
"""

import json
import os
import re
import subprocess
import sys
from collections import defaultdict
from pathlib import Path

# The core that a host's process runs, and that files from anywhere reach; then the rest of what is built natively.
CORE = ["host", "framework", "kernels", "effects", "builder", "documents", "media"]
OTHER = ["window", "commands", "stage", "cli"]
READERS = ("host/animation_block.cpp", "framework/source_animation.cpp", "window/configuration_text.cpp",
           "documents/document_text.cpp", "media/*_reader.cpp", "media/gif_survey.cpp", "media/gif_canvas.cpp",
           "media/lzw_decoder.cpp", "media/png_chunks.cpp", "media/png_format.cpp", "media/png_pixels.cpp",
           "media/jpeg_decoder.cpp", "media/orientation.cpp", "commands/survey_text.cpp", "commands/part_file.cpp",
           "commands/recipe_text.cpp", "commands/color_profile.cpp", "commands/picture_header.cpp")
LOWEST = 25


def programs(build):
    """Every program that has run and can tell what it executed."""
    return [str(path) for path in sorted((build / "bin").iterdir()) if path.is_file() and path.stat().st_mode & 0o100]


def llvm_cov(command, build, sources, *options):
    objects = programs(build)
    words = ["llvm-cov", command, f"-instr-profile={build}/coverage.profdata", *options, objects[0]]
    for other in objects[1:]:
        words += ["-object", other]
    return subprocess.run(words + sources, check=True, capture_output=True).stdout.decode()


def place_of(root, build, file):
    """The file's path from the root; None where it is not of the project. The compiler may write it from the tree."""
    path = Path(os.path.normpath(build / file["filename"]))
    inside = path.is_relative_to(root) and path.relative_to(root).parts[0] in CORE + OTHER
    return str(path.relative_to(root)) if inside else None


def merge(build):
    profiles = [str(path) for path in sorted((build / "profiles").glob("*.profraw"))]
    if not profiles:
        sys.exit(f"report_coverage: no test has run in {build}")
    subprocess.run(["llvm-profdata", "merge", "-sparse", "-o", f"{build}/coverage.profdata", *profiles], check=True)


def percent(covered, count):
    return f"{100 * covered / count:6.1f} %" if count else "       -"


def add(sums, summary):
    for kind in ("lines", "branches"):
        sums[kind][0] += summary[kind]["covered"]
        sums[kind][1] += summary[kind]["count"]


def row(name, sums):
    lines, branches = sums["lines"], sums["branches"]
    return (f"{name:34} {lines[1]:7} {percent(*lines)} {branches[1]:9} {percent(*branches)}"
            f" {lines[1] - lines[0]:8} {branches[1] - branches[0]:9}")


def new_sums():
    return {"lines": [0, 0], "branches": [0, 0]}


def print_summary(root, build):
    report = json.loads(llvm_cov("export", build, [], "-summary-only", "-skip-functions", "-skip-expansions"))
    files = {}
    for file in report["data"][0]["files"]:
        if name := place_of(root, build, file):
            files[name] = file["summary"]
    (build / "coverage.json").write_text(json.dumps(files, indent=1))
    sums = defaultdict(new_sums)
    for name, summary in files.items():
        folder = name.split("/")[0]
        add(sums[folder], summary)
        if folder in CORE:
            add(sums["the core"], summary)
        if any(Path(name).match(pattern) for pattern in READERS):
            add(sums["readers"], summary)
    head = f"{'folder':34} {'lines':>7} {'covered':>8} {'branches':>9} {'covered':>8} {'lines not':>9} {'branches not':>9}"
    print(head)
    for name in [*CORE, "the core", *OTHER, "readers"]:
        print(row(name, sums[name]))
    print("\nFiles with the most branches that had one outcome only:")
    left = sorted(files.items(), key=lambda item: item[1]["branches"]["covered"] - item[1]["branches"]["count"])
    for name, summary in left[:LOWEST]:
        own = new_sums()
        add(own, summary)
        print(row(name, own))


def print_lines(root, build, pattern):
    for file in json.loads(llvm_cov("export", build, [], "-skip-expansions", "-skip-functions"))["data"][0]["files"]:
        name = place_of(root, build, file)
        if not name or not re.search(pattern, name):
            continue
        text = (root / name).read_text().splitlines()
        missing = defaultdict(set)
        for line, _, count, has_count, starts, gap in file["segments"]:
            if has_count and starts and not gap and count == 0:
                missing[line].add("not executed")
        for line, column, end_line, end, taken, skipped, *_ in file.get("branches", []):
            if taken == 0 or skipped == 0:
                condition = text[line - 1][column - 1:end - 1] if line == end_line else text[line - 1][column - 1:]
                outcome = "never true" if taken == 0 else "never false"
                missing[line].add(f"`{condition}` {'never reached' if taken == skipped == 0 else outcome}")
        for line in sorted(missing):
            print(f"{name}:{line}: {'; '.join(sorted(missing[line]))}\n    {text[line - 1].strip()}")


def main():
    root, build = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve()
    merge(build)
    if len(sys.argv) > 3 and sys.argv[3]:
        print_lines(root, build, sys.argv[3])
    else:
        print_summary(root, build)


main()
