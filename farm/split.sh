#!/bin/bash
# SPDX-License-Identifier: MIT
# farm/split.sh MACHINES IN OUT FRAMES OPTIONS...: one long animation in parts of FRAMES frames, on machines that all see
# both files under the same paths. MACHINES is what GNU parallel's --sshlogin takes, as for ssh.sh.
set -euo pipefail
fail() {
    echo "$(basename "$0"): $*" >&2
    exit 1
}

[ $# -ge 4 ] || fail "needs machines, an animation, a name for the result, frames in a part, and options of kestrel apply."
machines=$1 in=$(realpath -- "$2") out=$(realpath -- "$3") size=$4
shift 4
[[ $size =~ ^[1-9][0-9]*$ ]] || fail "$size: is not a number of frames."
kestrel=${KESTREL:-kestrel}
parts=$out.parts
survey=$parts/whole.survey
mkdir -p "$parts" || fail "$parts: cannot be made."

# An interrupted run goes on with its own survey. Other options, or another animation, are refused by each part.
[ -f "$survey" ] || "$kestrel" survey "$in" -o "$survey" --format "${out##*.}" --quiet "$@"
frames=$(sed -n 's/^;frames //p' "$survey")
for ((first = 0; first < frames; first += size)); do
    last=$((first + size < frames ? first + size - 1 : frames - 1))
    printf '%08d\t%d-%d\n' "$first" "$first" "$last"
done >"$parts/list"
parallel --quote --sshlogin "$machines" --jobs "${JOBS:-100%}" --retries 3 --halt soon,fail=20% \
    --colsep '\t' \
    "$kestrel" apply "$in" -o "$parts/{1}.kpart" --survey "$survey" --frames '{2}' \
    --skip-done --quiet --threads 1 "$@" :::: "$parts/list"
cut -f 1 "$parts/list" | sed "s/\$/.kpart/" | (cd "$parts" && xargs "$kestrel" join -o "$out" --quiet)
rm -r "$parts"
