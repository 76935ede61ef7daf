# SPDX-License-Identifier: MIT
"""Compares kestrel's files with what other programs see in them: check_decoders.py KESTREL FOLDER JOBS [CASE].

Each case makes random files from its name alone and keeps them in FOLDER when it fails. The last line is the count.
"""
import concurrent.futures
import pathlib
import random
import re
import shutil
import sys
import traceback

import readers
import writers
from animations import Different


def run_case(kestrel, folder, name, check):
    folder = folder / name
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    try:
        check(kestrel, random.Random(name), folder)
    except Different as difference:
        return "%s: %s (files: %s)" % (name, difference, folder)
    except Exception:  # A program that fails, or reports what cannot be understood, fails the case and no other.
        return "%s: %s (files: %s)" % (name, traceback.format_exc(), folder)
    shutil.rmtree(folder)
    return None


def main():
    kestrel, folder, jobs = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve(), int(sys.argv[3])
    wanted = re.compile(sys.argv[4] if len(sys.argv) > 4 else "")
    cases = [("%s-%d" % (name, number), check) for number, (name, check) in enumerate(writers.CASES + readers.CASES)]
    cases = [case for case in cases if wanted.search(case[0])]
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        results = list(pool.map(lambda case: run_case(kestrel, folder, *case), cases))
    failures = [result for result in results if result]
    for failure in failures:
        print(failure)
    print("%d passed, %d failed" % (len(results) - len(failures), len(failures)))
    return 1 if failures else 0


sys.exit(main())
