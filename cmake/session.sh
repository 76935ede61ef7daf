# SPDX-License-Identifier: MIT
# Sourced by ./run and ./test: where things are, building, and a Wine session with a display of its own.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
work=$root/.work
display_pid=
session_started=

# Progress goes to the error stream: standard output belongs to what is run.
say() { echo "== $*" >&2; }

fail() {
    echo "$(basename "$0"): $*" >&2
    exit 1
}

# build PRESET [TARGET...]: configures and builds; quiet unless it fails.
build() {
    local preset=$1 log=$work/logs/build-$1.log
    shift
    local targets=()
    [ $# -eq 0 ] || targets=(--target "$@")
    mkdir -p "$work/logs"
    say "Building $preset (log: ${log#"$root"/})"
    if ! (cd "$root" && cmake --preset "$preset" && cmake --build --preset "$preset" "${targets[@]}") >"$log" 2>&1; then
        grep -E -A 12 'error|Error|FAILED' "$log" | head -n 80 >&2 || tail -n 40 "$log" >&2
        fail "the $preset build failed; the whole log is in ${log#"$root"/}."
    fi
}

# The same, but silent and immediate when nothing has changed since the last build.
build_if_needed() {
    local tree=$work/build/$1
    if [ -f "$tree/build.ninja" ] && [ ! "$root/CMakePresets.json" -nt "$tree/build.ninja" ] &&
        ninja -C "$tree" -n "${@:2}" 2>/dev/null | grep -q 'no work to do'; then
        return 0
    fi
    build "$@"
}

# start_wine [DISPLAY]: makes the Wine prefix on first use; without a display, starts an Xvfb for the session.
start_wine() {
    [ -z "$session_started" ] || return 0
    export WINEPREFIX=$work/wine WINEARCH=win64 WINEDEBUG=-all
    mkdir -p "$work/logs"
    [ -n "${1:-}" ] || start_display
    session_started=yes
    mkdir -p "$work/sessions"
    touch "$work/sessions/$$"

    if [ ! -f "$WINEPREFIX/.complete" ]; then
        say "Making the Wine prefix (once)"
        rm -rf "$WINEPREFIX"
        if ! timeout 1200 "$root/cmake/wine" wineboot --init >"$work/logs/wineboot.log" 2>&1; then
            fail "Wine could not make its prefix; see ${work#"$root"/}/logs/wineboot.log."
        fi
        wine_server -w
        touch "$WINEPREFIX/.complete"
    fi
    # Debian's Wine does not find its own fonts: without them, the buttons of title bars are letters.
    ln -sf /usr/share/wine/fonts/* "$WINEPREFIX/drive_c/windows/Fonts/" 2>/dev/null || true
    if [ -n "${1:-}" ]; then manage_windows Y; else manage_windows N; fi
}

# manage_windows Y|N: whether a window manager frames Wine's windows. An Xvfb has none, and Wine would wait seconds for
# it whenever a window closes.
manage_windows() {
    local state=$WINEPREFIX/.managed
    [ ! -f "$state" ] || [ "$(<"$state")" != "$1" ] || return 0
    "$root/cmake/wine" reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d "$1" /f >/dev/null 2>&1
    echo "$1" >"$state"
}

# An Xvfb on a display number of its own choice. The limit is for one that hangs: a loaded machine takes seconds.
start_display() {
    local number_file=$work/logs/display.$$ waited
    Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$number_file" >"$work/logs/xvfb.log" 2>&1 &
    display_pid=$!
    for ((waited = 0; waited < 1200; ++waited)); do
        [ ! -s "$number_file" ] || break
        kill -0 "$display_pid" 2>/dev/null || break
        sleep 0.1
    done
    [ -s "$number_file" ] || fail "Xvfb did not start; see ${work#"$root"/}/logs/xvfb.log."
    DISPLAY=:$(<"$number_file")
    export DISPLAY
    rm -f "$number_file"
}

# The wineserver of our own prefix only.
wine_server() {
    local server
    for server in /usr/lib/wine/wineserver64 /usr/lib/wine/wineserver wineserver; do
        if command -v "$server" >/dev/null 2>&1; then
            WINEPREFIX=$work/wine timeout 600 "$server" "$@" 2>/dev/null || true
            return 0
        fi
    done
}

# Ends what the session started, programs that hang included; another session in the same prefix goes on undisturbed.
end_session() {
    local other
    if [ -n "$session_started" ]; then
        rm -f "$work/sessions/$$"
        for other in "$work"/sessions/*; do
            [ -e "$other" ] || break
            kill -0 "$(basename "$other")" 2>/dev/null || rm -f "$other"
        done
        rmdir "$work/sessions" 2>/dev/null && wine_server -k
    fi
    if [ -n "$display_pid" ]; then
        kill "$display_pid" 2>/dev/null || true
        wait "$display_pid" 2>/dev/null || true
    fi
    session_started= display_pid=
}
trap end_session EXIT
trap 'exit 130' INT
trap 'exit 143' TERM
