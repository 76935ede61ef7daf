#!/bin/bash
# SPDX-License-Identifier: MIT
# farm/local.sh IN OUT OPTIONS...: every picture in IN through kestrel apply, several at a time, with GNU parallel.
set -euo pipefail
. "$(dirname "$0")/prepare.sh"

# The log of an interrupted run is only for the same work.
log=$out/.farm/$(printf '%s\0' "$@" | cat - <(cut -f 1,2 "$list") | sha256sum | cut -c 1-16).log
parallel --quote --jobs "${JOBS:-100%}" --joblog "$log" --resume-failed --halt soon,fail=20% --colsep '\t' \
    "$kestrel" apply "$in/{1}" -o "$out/{2//}/" --skip-done --quiet --threads 1 "$@" :::: "$list"
rm -f "$log" # all is done: the next run looks at everything again
