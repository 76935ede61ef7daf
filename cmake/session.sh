# SPDX-License-Identifier: MIT
# Sourced by ./run and ./test: where things are, building, and a Wine session with a display of its own.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
work=$root/.work
# Debian's Python has Debian's libraries; another one may come first in the path.
python=(/usr/bin/python3 -B)
displays=()  # the process numbers of our Xvfb
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

# announce TEXT: reads ninja's output and says the text once, when something is being built.
announce() {
    local line told=
    while IFS= read -r line; do
        case $line in
            *'] Building '* | *'] Linking '*) [ -n "$told" ] || say "$1"; told=yes ;;
        esac
    done
}

# The same, but silent and immediate when nothing has changed since the last build. (A dry run does not tell: it does
# not look through the folders.)
build_if_needed() {
    local tree=$work/build/$1 log=$work/logs/build-$1.log
    mkdir -p "$work/logs"
    if [ -f "$tree/build.ninja" ] && [ ! "$root/CMakePresets.json" -nt "$tree/build.ninja" ] &&
        ninja -C "$tree" "${@:2}" 2>&1 | tee "$log" | announce "Building $1 (log: ${log#"$root"/})"; then
        return 0
    fi
    build "$@"
}

# start_wine [DISPLAY]: makes the Wine prefix on first use; without a display, starts an Xvfb for the session.
start_wine() {
    [ -z "$session_started" ] || return 0
    export WINEPREFIX=$work/wine WINEARCH=win64 WINEDEBUG=-all
    mkdir -p "$work/logs" "$work/sessions"
    session_started=yes
    touch "$work/sessions/$$"
    if [ -n "${1:-}" ]; then
        make_prefix
        manage_windows Y
    else
        start_display
        make_prefix
        manage_windows N
    fi
}

# start_wine_sessions COUNT [NAME]: prefixes with a display each, for test programs side by side; see cmake/wine. With a
# name these are prefixes of their own, in place of those of another name.
start_wine_sessions() {
    local number prefix sessions= first=1
    [ -n "${2:-}" ] || [ -z "${KFX_WINE_SESSIONS:-}" ] || return 0
    case $work in
        *[[:space:]@]*) fail "Windows tests cannot run in a folder whose path has a space or an @: $work" ;;
    esac
    unset KFX_WINE_SESSIONS
    start_wine
    [ -n "${2:-}" ] || { sessions=$WINEPREFIX@$DISPLAY first=2; }
    for ((number = first; number <= $1; ++number)); do
        prefix=$work/wine.${2:+$2.}$number
        copy_prefix "$prefix"
        start_display
        WINEPREFIX=$prefix manage_windows N
        sessions+=" $prefix@$DISPLAY"
    done
    export KFX_WINE_SESSIONS=$sessions
}

# speak LOCALE: the language, and so the code page, in which Windows starts in every prefix that runs no program yet.
speak() {
    mkdir -p "$work/locales"
    [ -d "$work/locales/$1.UTF-8" ] || localedef -i "$1" -f UTF-8 "$work/locales/$1.UTF-8"
    export KFX_WINE_LOCALE=$1.UTF-8
}

make_prefix() {
    if [ ! -f "$WINEPREFIX/.complete" ]; then
        say "Making the Wine prefix (once)"
        rm -rf "$WINEPREFIX" "$WINEPREFIX".*
        if ! timeout 1200 "$root/cmake/wine" wineboot --init >"$work/logs/wineboot.log" 2>&1; then
            fail "Wine could not make its prefix; see ${work#"$root"/}/logs/wineboot.log."
        fi
        wine_server "$WINEPREFIX" -w
        touch "$WINEPREFIX/.complete"
    fi
    # Debian's Wine does not find its own fonts: without them, the buttons of title bars are letters.
    ln -sf /usr/share/wine/fonts/* "$WINEPREFIX/drive_c/windows/Fonts/" 2>/dev/null || true
}

# copy_prefix PREFIX: a second prefix. Wine's own files are only read and therefore linked, all others are copies.
copy_prefix() {
    [ ! -f "$1/.complete" ] || return 0
    rm -rf "$1"
    mkdir -p "$1"
    # Wine writes its registry to the files some time after a change, and when its last program has ended.
    [ "$(ls "$work/sessions")" != "$$" ] || { wine_server "$WINEPREFIX" -k && wine_server "$WINEPREFIX" -w; }
    if ! { tar -C "$WINEPREFIX" --exclude=./drive_c/windows -cf - . | tar -C "$1" -xf - &&
        rm -f "$1/.complete" "$1/.managed" &&
        cp -al "$WINEPREFIX/drive_c/windows" "$1/drive_c/" &&
        touch "$1/.complete"; }; then
        fail "the Wine prefix could not be copied to ${1#"$root"/}."
    fi
}

# manage_windows Y|N: whether a window manager frames Wine's windows. An Xvfb has none, and Wine would wait seconds for
# it whenever a window closes. A program that crashes ends at once: nobody sees the box in which Wine's debugger waits.
manage_windows() {
    local state=$WINEPREFIX/.managed settings="$1, crashes end programs"
    [ ! -f "$state" ] || [ "$(<"$state")" != "$settings" ] || return 0
    set_registry 'HKCU\Software\Wine\X11 Driver' Managed REG_SZ "$1"
    set_registry 'HKCU\Software\Wine\WineDbg' ShowCrashDialog REG_DWORD 0
    set_registry 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\AeDebug' Auto REG_SZ 0
    echo "$settings" >"$state"
}

# set_registry KEY NAME TYPE VALUE
set_registry() {
    "$root/cmake/wine" reg add "$1" /v "$2" /t "$3" /d "$4" /f >/dev/null 2>&1 ||
        fail "Wine could not change the registry of ${WINEPREFIX#"$root"/}."
}

# An Xvfb on a display number of its own choice, as large as KFX_SCREEN says. The limit is for one that hangs: a loaded machine takes seconds.
start_display() {
    local number_file=$work/logs/display.$$ waited
    rm -f "$number_file"
    Xvfb -displayfd 3 -screen 0 "${KFX_SCREEN:-1280x1024}x24" -nolisten tcp 3>"$number_file" >>"$work/logs/xvfb.log" 2>&1 &
    displays+=($!)
    for ((waited = 0; waited < 1200; ++waited)); do
        [ ! -s "$number_file" ] || break
        kill -0 "${displays[-1]}" 2>/dev/null || break
        sleep 0.1
    done
    [ -s "$number_file" ] || fail "Xvfb did not start; see ${work#"$root"/}/logs/xvfb.log."
    DISPLAY=:$(<"$number_file")
    export DISPLAY
    rm -f "$number_file"
}

# wine_server PREFIX ARGUMENT...: tells the server of this prefix only.
wine_server() {
    local server prefix=$1
    shift
    for server in /usr/lib/wine/wineserver64 /usr/lib/wine/wineserver wineserver; do
        if command -v "$server" >/dev/null 2>&1; then
            WINEPREFIX=$prefix timeout 600 "$server" "$@" 2>/dev/null || true
            return 0
        fi
    done
}

# Ends what the session started, programs that hang included; another session in the same prefixes goes on undisturbed.
end_session() {
    local other prefix
    if [ -n "$session_started" ]; then
        rm -f "$work/sessions/$$"
        for other in "$work"/sessions/*; do
            [ -e "$other" ] || break
            kill -0 "$(basename "$other")" 2>/dev/null || rm -f "$other"
        done
        if rmdir "$work/sessions" 2>/dev/null; then
            for prefix in "$work"/wine "$work"/wine.*; do
                [ ! -d "$prefix" ] || wine_server "$prefix" -k
            done
        fi
    fi
    if [ ${#displays[@]} -gt 0 ]; then
        kill "${displays[@]}" 2>/dev/null || true
        wait "${displays[@]}" 2>/dev/null || true
    fi
    session_started= displays=()
}
trap end_session EXIT
trap 'exit 130' INT
trap 'exit 143' TERM
