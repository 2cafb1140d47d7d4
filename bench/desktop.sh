#!/usr/bin/env bash
# How the program feels on a desktop: how long it takes to start, what it costs while nothing
# happens, and how busy its main thread is while it receives. See --help.
set -euo pipefail

project=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

usage() {
    cat << 'END'
Usage: bench/desktop.sh [BUILD]     BUILD: a build folder; build/release when not given

Runs the program on a screen in memory, in a home folder and a network of its own. Prints the
median time from its start to "Server ready" and a visible main panel, its processor time and
memory while idle, and how busy its main thread is while a file of 1 GiB comes in.
END
}

starts=9
idle_seconds=20
upload_mebibytes=1024

# In a network of its own, with a loopback interface only, where it may be root of.
if [[ ${1:-} == --help || ${1:-} == -h ]]; then
    usage
    exit
fi
if [[ -z ${FERRYLANE_BENCH_INSIDE:-} ]]; then
    export FERRYLANE_BENCH_INSIDE=1
    exec unshare --map-root-user --net --pid --fork --mount-proc "$0" "$@"
fi

programs=$(cd "$project" && cd "${1:-build/release}/bin" && pwd)
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT # the processes go with their namespace
export HOME=$home XDG_RUNTIME_DIR=$home LC_ALL=C.UTF-8
export DBUS_SYSTEM_BUS_ADDRESS=unix:path=$home/no-bus
unset DBUS_SESSION_BUS_ADDRESS WAYLAND_DISPLAY XDG_CONFIG_HOME XDG_DATA_HOME XDG_STATE_HOME
log=$home/.local/state/Ferrylane/ferrylane.log

start_screen() {
    ip link set lo up
    Xvfb -displayfd 1 -screen 0 1280x800x24 -nolisten tcp > "$home/display" 2> /dev/null &
    until [[ -s $home/display ]]; do sleep 0.05; done
    DISPLAY=:$(< "$home/display")
    export DISPLAY
    icewm > /dev/null 2>&1 &
    until xdotool search --onlyvisible --name '^TaskBar$' > /dev/null 2>&1; do sleep 0.05; done
}

now_ms() {
    echo $(($(date +%s%N) / 1000000))
}

panel_shows() {
    xdotool search --onlyvisible --name '^Ferrylane$' > /dev/null 2>&1
}

# Starts the program as $program; sets $took.
start_program() {
    local begin
    rm -f "$log"
    begin=$(now_ms)
    "$programs/ferrylane" 2> /dev/null &
    program=$!
    until grep -q 'Server ready' "$log" 2> /dev/null; do sleep 0.005; done
    until panel_shows; do sleep 0.005; done
    took=$(($(now_ms) - begin))
}

stop_program() {
    kill "$program"
    wait "$program" || true
}

# ticks THREAD: its processor time in ticks, of which there are 100 a second; all of the program's
# without THREAD.
ticks() {
    local stat=/proc/$program${1:+/task/$1}/stat
    sed 's/.*) //' "$stat" | awk '{print $12 + $13}'
}

# percent TICKS MILLISECONDS: of a core.
percent() {
    awk -v ticks="$1" -v ms="$2" 'BEGIN {printf "%.2f %%", ticks * 1000 / ms}'
}

measure_start() {
    local -a times=()
    for ((i = 0; i < starts; i++)); do
        start_program
        times+=("$took")
        stop_program
    done
    mapfile -t times < <(printf '%s\n' "${times[@]}" | sort -n)
    echo "start to ready and shown: ${times[starts / 2]} ms (median of $starts," \
        "${times[0]} to ${times[starts - 1]} ms)"
}

measure_idle() {
    sleep 3
    local before begin
    before=$(ticks)
    begin=$(now_ms)
    sleep "$idle_seconds"
    echo "idle: $(percent $(($(ticks) - before)) $(($(now_ms) - begin))) of a core," \
        "$(awk '/^VmRSS/ {printf "%.0f MiB", $2 / 1024}' "/proc/$program/status") resident"
}

measure_receiving() {
    local before begin took
    mkdir -p "$home/Downloads"
    head -c "${upload_mebibytes}M" /dev/zero > "$home/file"
    before=$(ticks "$program")
    begin=$(now_ms)
    "$programs/ferrylane-phone" upload --local "$home/file" > /dev/null
    took=$(($(now_ms) - begin))
    echo "receiving $upload_mebibytes MiB in $took ms:" \
        "main thread busy $(percent $(($(ticks "$program") - before)) "$took")"
}

start_screen
measure_start
start_program
measure_idle
measure_receiving
stop_program
