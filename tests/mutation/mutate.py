#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Changes the portable core at random and tells which changes no test notices.

usage: mutate.py ROOT WORK [COUNT] [--seed N] [--only REGEX]

ROOT is the folder of the sources; nothing in it is changed. WORK gets a copy of them and a build tree without
sanitizers. COUNT changes (200) of operators, numbers and conditions are made one at a time. After each, the test
programs that cover its folder are built and run until one fails. The same seed (1) makes the same changes of the same
sources.

Changes that no test can notice, mostly because the program does the same with them, stand in explained.tsv with the
reason; they are told apart. The last line is "N passed, N failed": noticed or explained, and unnoticed.
"""

import argparse
import json
import os
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import time
from pathlib import Path

import changes

# What covers a folder, the quickest first. Programs named after the changed file come before them.
PROGRAMS = {
    "host": "host_tests changed_blocks_test framework_tests",
    "framework/math": "math_patterns_tests elementary_tests",
    "framework": "framework_tests refused_memory_tests host_tests changed_blocks_test build_driver_test "
                 "refusal_sweep_test effects_* configuration_tests",
    "kernels": "kernels_tests kept_points_tests math_rows_tests effects_* remap_test quantizer_test supercompression_test "
               "golden_builds_test scaler_tests",
    "effects": "effects_* golden_builds_test refusal_sweep_test",
    "builder": "remap_test quantizer_test supercompression_test fixed_palettes_test build_driver_test golden_builds_test "
               "build_memory_test threaded_builds_test refusal_sweep_test",
    "documents": "document_text_tests",
    "media": "media_tests media_memory_tests media_jobs_tests media_refused_allocations_tests bmp_fuzzer "
             "gif_fuzzer jpeg_fuzzer png_fuzzer webp_fuzzer y4m_fuzzer",
}

# Not the product: what a Windows program has in its place is tested by Windows programs; tables are written by scripts.
LEFT_OUT = re.compile(r"_windows\.|_native\.|/math/\w+_table\.cpp$|/bitmap_font\.cpp$|/sample_\w+\.(cpp|h)$")

MEMORY_LIMIT = 8 << 30  # a changed size may ask for everything


def say(text):
    print(text, file=sys.stderr, flush=True)


def run(command, log, **options):
    with open(log, "ab") as file:
        return subprocess.run(command, stdout=file, stderr=file, **options).returncode


def copy_sources(root, copy):
    """Writes only what differs, so that little is built again."""
    listed = subprocess.run(["git", "-C", root, "ls-files", "-co", "--exclude-standard", "-z"], check=True, capture_output=True)
    names = {name for name in listed.stdout.decode().split("\0") if name and (root / name).is_file()}
    for name in names:
        source, target = root / name, copy / name
        if target.is_file() and target.read_bytes() == source.read_bytes():
            continue
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(source, target)
    for target in copy.rglob("*"):
        if target.is_file() and str(target.relative_to(copy)) not in names:
            target.unlink()


class Tree:
    def __init__(self, root, work):
        self.root, self.work = root, work
        self.copy, self.build, self.log = work / "source", work / "build", work / "mutation.log"
        self.limits = {}

    def configure(self):
        linker = ["-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld"] if shutil.which("ld.lld") else []
        command = ["cmake", "-S", self.copy, "-B", self.build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
                   "-DCMAKE_C_FLAGS_DEBUG=-O1", "-DCMAKE_CXX_FLAGS_DEBUG=-O1 -w",
                   f"-DKFX_THIRD_PARTY_DIR={self.root}/.work/third-party", *linker]
        if run(command, self.log) != 0:
            sys.exit(f"mutate: the copy could not be configured; see {self.log}")

    def make(self, programs):
        return run(["ninja", "-C", self.build, *programs], self.log) == 0

    def programs(self):
        """Every test program with its command; None where it is not built."""
        shown = subprocess.run(["ctest", "--test-dir", self.build, "--show-only=json-v1"], check=True, capture_output=True)
        return {test["name"]: test.get("command") for test in json.loads(shown.stdout)["tests"]}

    def passes(self, command, limit):
        """Whether the program ends with 0 within the limit, in seconds."""
        with open(self.log, "ab") as log:
            program = subprocess.Popen(
                command, cwd=self.copy, stdout=log, stderr=log, start_new_session=True,
                env={**os.environ, "GTEST_BRIEF": "1", "GTEST_FAIL_FAST": "1", "GTEST_COLOR": "no"},
                preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (MEMORY_LIMIT, MEMORY_LIMIT)))
            try:
                return program.wait(limit) == 0
            except subprocess.TimeoutExpired:
                return False
            finally:
                if program.poll() is None:
                    os.killpg(program.pid, signal.SIGKILL)
                    program.wait()

    def measure(self, commands):
        """Each program must pass unchanged; its limit is far beyond what it took."""
        for name, command in commands.items():
            start = time.monotonic()
            if not self.passes(command, 1800):
                sys.exit(f"mutate: {name} fails without any change; see {self.log}")
            self.limits[name] = 20 + 10 * (time.monotonic() - start)


def folder_of(path):
    return max((folder for folder in PROGRAMS if path.startswith(folder + "/")), key=len)


def named_after(path, sources):
    """Words in the names of programs that look closest at a file: its own, and those of the effects that include it."""
    words = {Path(path).stem}
    if path.startswith("kernels/"):
        header = f'#include "{Path(path).with_suffix(".h")}"'
        words |= {Path(name).stem for name, text in sources.items() if name.startswith("effects/") and header in text}
    return words


def programs_for(path, sources, programs):
    """Names in the order in which they are run."""
    listed = []
    for pattern in PROGRAMS[folder_of(path)].split():
        listed += sorted(name for name in programs if re.fullmatch(pattern.replace("*", ".*"), name))
    words = named_after(path, sources)
    close = [name for name in listed if any(word in name for word in words)]
    return list(dict.fromkeys(close)), [name for name in dict.fromkeys(listed) if name not in close]


def read_core(root):
    sources = {}
    for folder in PROGRAMS:
        for path in sorted((root / folder).rglob("*")):
            name = str(path.relative_to(root))
            if path.suffix in (".cpp", ".h") and not LEFT_OUT.search(name):
                sources[name] = path.read_text()
    return sources


def built_natively(tree):
    """The files that this tree compiles; others are Windows only."""
    entries = json.loads((tree.build / "compile_commands.json").read_text())
    return {os.path.relpath(entry["file"], tree.copy) for entry in entries}


def read_explanations():
    """(path, line as it stands, old, new): why, and the places in the line that are meant, none for each of them."""
    rows = {}
    for line in (Path(__file__).parent / "explained.tsv").read_text().splitlines():
        if line and not line.startswith("#"):
            path, text, old, new, why = line.split("\t")
            places = [at.start() - 2 * i for i, at in enumerate(re.finditer("«.*?»", text))]
            rows[path, re.sub("[«»]", "", text), old, new] = (why, places)
    return rows


def explanation_of(change, sources, explanations):
    """Why no test can see this change; "" where that is not known."""
    line = sources[change.path].splitlines()[change.line - 1]
    why, places = explanations.get((change.path, line.strip(), change.old, change.new), ("", []))
    at = change.column - (len(line) - len(line.lstrip()))
    return why if not places or at in places else ""


def noticed_by(tree, change, sources, commands):
    """The name of a program that notices the change; "" for none, None when it does not compile."""
    target = tree.copy / change.path
    target.write_text(changes.apply(sources[change.path], change))
    try:
        for group in programs_for(change.path, sources, commands):
            if not group:
                continue
            if not tree.make(group):
                return None
            for name in group:
                if not tree.passes(commands[name], tree.limits[name]):
                    return name
        return ""
    finally:
        target.write_text(sources[change.path])


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("root", type=Path)
    parser.add_argument("work", type=Path)
    parser.add_argument("count", type=int, nargs="?", default=200)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--only", default="", help="only files whose path matches")
    arguments = parser.parse_args()

    tree = Tree(arguments.root.resolve(), arguments.work.resolve())
    tree.copy.mkdir(parents=True, exist_ok=True)
    tree.log.write_text("")
    copy_sources(tree.root, tree.copy)
    tree.configure()
    sources = read_core(tree.copy)
    compiled = built_natively(tree)
    everything = [change for path, text in sources.items() if re.search(arguments.only, path)
                  if path.endswith(".h") or path in compiled for change in changes.changes_of(path, text)]
    random.Random(arguments.seed).shuffle(everything)
    programs = tree.programs()
    wanted = {name for path in sources for group in programs_for(path, sources, programs) for name in group}
    say(f"{len(everything)} possible changes in {len(sources)} files, {len(wanted)} test programs")
    if not tree.make(sorted(wanted)):
        sys.exit(f"mutate: the copy could not be built; see {tree.log}")
    commands = {name: command for name, command in tree.programs().items() if name in wanted}
    tree.measure(commands)

    explanations = read_explanations()
    noticed = explained = invalid = 0
    unnoticed = []
    for change in everything:
        if noticed + explained + len(unnoticed) == arguments.count:
            break
        line = sources[change.path].splitlines()[change.line - 1].strip()
        program = noticed_by(tree, change, sources, commands)
        if program is None:
            invalid += 1
        elif program:
            noticed += 1
            say(f"{change} noticed by {program}")
        elif why := explanation_of(change, sources, explanations):
            explained += 1
            say(f"{change} explained: {why}")
        else:
            unnoticed.append(change)
            print(f"{change} UNNOTICED in: {line}", flush=True)
    total = noticed + explained + len(unnoticed)
    print(f"{total} changes with seed {arguments.seed}: {noticed} noticed, {explained} explained, {len(unnoticed)} unnoticed; "
          f"{invalid} more did not compile")
    print(f"{noticed + explained} passed, {len(unnoticed)} failed")


main()
