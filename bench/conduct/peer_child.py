# SPDX-License-Identifier: MIT
"""A child of the timing harness in Python: answers the line protocol of bench/child.h for jobs that were added."""
import sys
import time

jobs = []  # (job, variant, operation, prepare)


def add(job, variant, operation, prepare):
    """`prepare` gets the frames and answers what is to be timed. An operation that begins with "^" keeps its
    coordinates from an earlier frame, and one that begins with "~" does less work than the others."""
    jobs.append((job, variant, operation, prepare))


def say(text):
    sys.stdout.write(text + "\n")
    sys.stdout.flush()


def timed(prepared, number, shot, frames):
    """Milliseconds of one run."""
    if (number, shot) not in prepared:
        prepared[number, shot] = jobs[number][3](frames)
    start = time.perf_counter()
    prepared[number, shot]()
    return (time.perf_counter() - start) * 1e3


def serve(read_frames):
    """Until the input ends. `read_frames` makes the library's own pictures of raw bytes, width, height and count."""
    shots, prepared = {}, {}
    for line in sys.stdin:
        words = line.split()
        question = words[0] if words else ""
        if question == "quit":
            return
        try:
            if question == "frame":
                path = line.rstrip("\r\n").split(" ", 5)[5]
                with open(path, "rb") as file:
                    shots[words[1]] = read_frames(file.read(), *(int(word) for word in words[2:5]))
                say("ok")
            elif question == "list":
                for number, (job, variant, operation, _) in enumerate(jobs):
                    say(f"item\t{number}\t{job}\t{variant}\t{operation}")
                say("end")
            elif question == "run":
                say(f"ms {timed(prepared, int(words[1]), words[2], shots[words[2]]):.6f}")
            else:
                say("no")
        except Exception as error:  # whatever the library says: the harness goes on with its other jobs
            print(f"{line.strip()}: {error}", file=sys.stderr)
            say("no")
