# SPDX-License-Identifier: MIT
# Read by the other scripts of this folder, whose first arguments are IN OUT OPTIONS...: finds the work and writes it
# into OUT/.farm/list, a line for each result: the picture's path in IN, a tab, the result's path in OUT, a tab, and
# true when the result is there already. What kestrel refuses before any work ends the script here.

fail() {
    echo "$(basename "$0"): $*" >&2
    exit 1
}

[ $# -ge 3 ] || fail "needs a folder of pictures, a folder for the results, and options of kestrel apply."
[ -d "$1" ] || fail "$1: is not a folder."
mkdir -p "$2/.farm" || fail "$2: cannot be made."
in=$(cd "$1" && pwd) out=$(cd "$2" && pwd)
shift 2
kestrel=${KESTREL:-kestrel} # a path, or a name that is found on each machine
list=$out/.farm/list

# Pictures that cannot be read (3) stay in the list: they fail in their turn and stop no other.
plan=$("$kestrel" apply "$in" -o "$out/" --recursive --dry-run --skip-done --json "$@") || [ $? = 3 ] ||
    fail "$(jq -r 'select(.ok | not).error' <<<"$plan" | head -n 1)"
jq -r --arg in "$in/" --arg out "$out/" '[(.input | ltrimstr($in)), (.output | ltrimstr($out)), .skipped] | @tsv' \
    <<<"$plan" >"$list"
! grep -q '\\' "$list" || fail "a name has a tab, a line end or a backslash: $(grep -m 1 '\\' "$list" | cut -f 1)"
