# SPDX-License-Identifier: MIT
"""Runs the scripts of farm/ on made pictures: check_farm.py KESTREL SCRIPTS FOLDER [CASE].

A case that fails leaves its files in FOLDER. The last line is the count.
"""
import pathlib
import re
import shutil
import signal
import sys
import time
import traceback

import cases
import pictures
import services


def end(number, _):
    raise SystemExit(128 + number)


def run_case(kestrel, scripts, folder, bases, case):
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    try:
        case(cases.Context(kestrel, scripts, folder, bases))
    except (cases.Failed, services.NotStarted) as failure:
        return "%s: %s (files: %s)" % (case.__name__, failure, folder)
    except Exception:  # It fails this case and no other.
        return "%s: %s (files: %s)" % (case.__name__, traceback.format_exc(), folder)
    shutil.rmtree(folder, ignore_errors=True)
    return None


def main():
    kestrel, scripts, folder = (pathlib.Path(path).resolve() for path in sys.argv[1:4])
    wanted = re.compile(sys.argv[4] if len(sys.argv) > 4 else "")
    signal.signal(signal.SIGTERM, end)
    chosen = [case for case in cases.CASES if wanted.search(case.__name__)]
    shutil.rmtree(folder / "bases", ignore_errors=True)
    bases = pictures.make_bases(kestrel, folder / "bases")
    failures = 0
    for case in chosen:
        start = time.monotonic()
        failure = run_case(kestrel, scripts, folder / case.__name__, bases, case)
        failures += failure is not None
        print(failure or "%s: passed (%.1f s)" % (case.__name__, time.monotonic() - start), flush=True)
    print("%d passed, %d failed" % (len(chosen) - failures, failures))
    return 1 if failures else 0


sys.exit(main())
