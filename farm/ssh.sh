#!/bin/bash
# SPDX-License-Identifier: MIT
# farm/ssh.sh MACHINES IN OUT OPTIONS...: the same on several machines that all see IN and OUT under the same paths.
# MACHINES is what GNU parallel's --sshlogin takes: anna,4/user@berta,: (the last is this machine; 4 files at a time).
set -euo pipefail
machines=${1:?"needs the machines; see the head of this script"}
shift
. "$(dirname "$0")/prepare.sh"

parallel --quote --nonall --tag --sshlogin "$machines" "$kestrel" self-test >"$out/.farm/self-test" ||
    fail "not every machine has a kestrel ($kestrel) that works; see above."
log=$out/.farm/$(printf '%s\0' "$@" | cat - <(cut -f 1,2 "$list") | sha256sum | cut -c 1-16).log
parallel --quote --sshlogin "$machines" --retries 3 --joblog "$log" --resume-failed --halt soon,fail=20% \
    --colsep '\t' \
    "$kestrel" apply "$in/{1}" -o "$out/{2//}/" --skip-done --quiet --threads 1 "$@" :::: "$list"
rm -f "$log"
