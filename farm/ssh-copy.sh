#!/bin/bash
# SPDX-License-Identifier: MIT
# farm/ssh-copy.sh MACHINES IN OUT OPTIONS...: the same on machines that share no folder. Each picture is copied there,
# its result is copied back, and both are removed there.
set -euo pipefail
machines=${1:?"needs the machines; see the head of ssh.sh"}
shift
. "$(dirname "$0")/prepare.sh"

from=$(basename "$in") to=$(basename "$out")
[ "$from" != "$to" ] || fail "the last parts of both paths are $to; give the folders different names."
parallel --quote --nonall --tag --sshlogin "$machines" "$kestrel" self-test >"$out/.farm/self-test" ||
    fail "not every machine has a kestrel ($kestrel) that works; see above."
# The other machines cannot see what is there already: it is verified here.
failed=0
awk -F '\t' '$3 == "true"' "$list" | parallel --quote --colsep '\t' \
    "$kestrel" apply "$in/{1}" -o "$out/{2//}/" --skip-done --quiet --threads 1 "$@" || failed=$?
cd "$out/.." # results come back to the same path as they have there
export RSYNC_OLD_ARGS=1 # parallel quotes names for the other machine's shell; a newer rsync would do it once more
awk -F '\t' '$3 == "false"' "$list" | parallel --quote --sshlogin "$machines" --retries 3 --halt soon,fail=20% \
    --colsep '\t' --workdir ... --transferfile "${in%/*}/./$from/{1}" --return "$to/{2}" --cleanup \
    "$kestrel" apply "$from/{1}" -o "$to/{2//}/" --quiet --threads 1 "$@" || failed=$?
exit "$failed"
