# SPDX-License-Identifier: MIT
"""What ./run bench does: times jobs in several programs, on one core and in turn, and writes tables into a document.
The programs are built before."""
import argparse
import json
import os
import platform
import shlex
import subprocess
import sys
import tempfile
import time

import children
import jobs
import sections
from tables import mean_of, table_of


def machine_text(arguments, processors):
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        models = [line.split(":", 1)[1].strip() for line in file if line.startswith("model name")]
    model = models[0] if models else platform.machine()
    words = "One processor" if processors == 1 else f"{processors} processors"
    return f"{words} of {os.cpu_count()}, {model}." + (" A quick run, with few repeats." if arguments.quick else "")


def make_jobs(arguments, folder):
    return machine_text(arguments, 1) + "\n\n" + jobs.make(arguments, folder)


def make_growth(arguments, _):
    os.sched_setaffinity(0, {max(arguments.processors)})
    command = shlex.split(arguments.growth) + (["--quick"] if arguments.quick else [])
    tables = subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True, encoding="utf-8").stdout
    return f"{machine_text(arguments, 1)} Nanoseconds a pixel, the least of some runs.\n\n{tables}"


def seconds_of(command):
    start = time.perf_counter()
    subprocess.run(command, check=True, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
    return time.perf_counter() - start


def make_threads(arguments, folder):
    os.sched_setaffinity(0, arguments.processors)
    kestrel = shlex.split(arguments.kestrel)
    listed = subprocess.run([*kestrel, "effects", "--json"], check=True, stdout=subprocess.PIPE, text=True).stdout
    names = [effect["name"] for effect in json.loads(listed)["effects"]]
    effects = [name for name in names if arguments.only in name.lower().replace(" ", "-")]
    times = {(effect, threads): [] for effect in effects for threads in (1, 2)}
    for _ in range(1 if arguments.quick else 2):
        for (effect, threads), taken in times.items():
            taken.append(seconds_of([*kestrel, "apply", f"{folder}/A60.gif", "-o", f"{folder}/out.gif",
                                     "--effect", effect, "--threads", str(threads),
                                     "--force", "--quiet", "--no-recipe"]))
    rows, ratios = [], []
    for effect in effects:
        one, two = min(times[effect, 1]), min(times[effect, 2])
        ratios.append(one / two)
        rows.append([effect, f"{one:.2f}", f"{two:.2f}", f"{one / two:.2f}"])
    width, height = arguments.size
    return "\n\n".join([
        f"{machine_text(arguments, len(arguments.processors))} Seconds on the clock of `kestrel apply` with each effect, "
        f"from a GIF of 60 frames of {width} x {height} to a GIF:",
        table_of((("effect", True), ("one thread", False), ("two threads", False), ("one / two", False)), rows),
        f"Geometric mean: {mean_of(ratios):.2f}."])


def make_previews(arguments, _):
    os.sched_setaffinity(0, {max(arguments.processors)})
    sizes = (arguments.size, arguments.large)
    rows = {}
    for width, height in sizes:
        command = [*shlex.split(arguments.preview), str(width), str(height), "20" if arguments.quick else "300"]
        for line in subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout.splitlines():
            effect, taken = line.split("\t")
            rows.setdefault(effect, [effect]).append(f"{float(taken):.1f}")
    columns = [("effect", True), *((f"{width} x {height}, ms", False) for width, height in sizes)]
    chosen = [row for row in rows.values() if arguments.only in row[0].lower().replace(" ", "-")]
    return f"{machine_text(arguments, 1)} The real window, under Wine:\n\n{table_of(columns, chosen)}"


SECTIONS = {"jobs": make_jobs, "growth": make_growth, "threads": make_threads, "previews": make_previews}


def size_of(text):
    width, height = (int(side) for side in text.split("x"))
    return width, height


def parse(words):
    parser = argparse.ArgumentParser(
        prog="./run bench", description="Times the effects and the steps of a build, and writes the tables into "
        "docs/performance.md. Without a section it makes all of them.")
    parser.add_argument("section", nargs="*", help="jobs: beside literal references, other programs and the machine's "
                        "limits; growth: by sides, frames and colours; threads: kestrel apply on one and two; "
                        "previews: until the plug-in's window has drawn one")
    parser.add_argument("--quick", action="store_true", help="fewer repeats")
    parser.add_argument("--only", default="", metavar="TEXT",
                        help='only jobs, or effects for threads and previews, with this in their names, as "blur"; '
                        'prints the tables only')
    parser.add_argument("--print", action="store_true", help="prints the tables and writes none")
    parser.add_argument("--no-peers", action="store_true", help="without other programs and libraries")
    parser.add_argument("--child", action="append", default=[], metavar="NAME=COMMAND",
                        help="one more program that answers the lines of bench/child.h")
    parser.add_argument("--document", default="docs/performance.md", help=argparse.SUPPRESS)
    parser.add_argument("--patience", type=float, help=argparse.SUPPRESS)  # milliseconds for all runs of a job
    parser.add_argument("--size", type=size_of, default=(640, 480), help=argparse.SUPPRESS)
    for program in ("native", "wine", "reference", "growth", "kestrel", "preview"):
        parser.add_argument("--" + program, default="", help=argparse.SUPPRESS)
    arguments = parser.parse_args(words)
    unknown = [name for name in arguments.section if name not in SECTIONS]
    if unknown:
        parser.error(f'There is no section "{unknown[0]}": choose from {", ".join(SECTIONS)}.')
    if any("=" not in child for child in arguments.child):
        parser.error("--child needs a name and a command, as NAME=COMMAND.")
    return arguments


def main(words):
    arguments = parse(words)
    arguments.processors = os.sched_getaffinity(0)
    usual = arguments.size == (640, 480)
    arguments.large = (1920, 1080) if usual else (2 * arguments.size[0], 2 * arguments.size[1])
    writes = not (arguments.print or arguments.only)
    with tempfile.TemporaryDirectory(prefix="kfx-bench-") as folder:
        size = [] if usual else [str(side) for side in arguments.size]
        try:
            subprocess.run([*shlex.split(arguments.native), "--frames", folder, *size], check=True)
            for name in arguments.section or SECTIONS:
                text = SECTIONS[name](arguments, folder)
                print(text, end="\n\n", flush=True)
                if writes:
                    sections.write(arguments.document, name, text)
        except (children.Failed, sections.NoSection, subprocess.CalledProcessError, OSError) as error:
            print(f"bench: {error}", file=sys.stderr)
            return 1
    if writes:
        print(f"Written to {arguments.document}.", file=sys.stderr)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
