# SPDX-License-Identifier: MIT
"""Checks what package/make has made: check_package.py ROOT FIRST SECOND WORK [CASE].

FIRST and SECOND are folders of two runs, WORK is a folder for unpacking. Windows programs run by cmake/wine. A case that
fails leaves its files in WORK. The last line is the count.
"""
import pathlib
import re
import shutil
import sys
import time
import traceback

import cases


def run_case(context, case):
    shutil.rmtree(context.folder, ignore_errors=True)
    context.folder.mkdir(parents=True)
    try:
        case(context)
    except cases.Failed as failure:
        return "%s: %s (files: %s)" % (case.__name__, failure, context.folder)
    except Exception:  # It fails this case and no other.
        return "%s: %s (files: %s)" % (case.__name__, traceback.format_exc(), context.folder)
    shutil.rmtree(context.folder, ignore_errors=True)
    return None


def main():
    root, first, second, work = (pathlib.Path(path).resolve() for path in sys.argv[1:5])
    wanted = re.compile(sys.argv[5] if len(sys.argv) > 5 else "")
    chosen = [case for case in cases.CASES if wanted.search(case.__name__)]
    failures = 0
    for case in chosen:
        start = time.monotonic()
        failure = run_case(cases.Context(root, first, second, work / case.__name__), case)
        failures += failure is not None
        print(failure or "%s: passed (%.1f s)" % (case.__name__, time.monotonic() - start), flush=True)
    print("%d passed, %d failed" % (len(chosen) - failures, failures))
    return 1 if failures else 0


sys.exit(main())
