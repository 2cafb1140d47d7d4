#!/usr/bin/env bash
# How the program feels on a desktop: how long it takes to start, what it costs while nothing
# happens, and how busy its main thread is while it receives. See --help.
set -euo pipefail

project=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
# shellcheck source=tools/private-desktop.sh
source "$project/tools/private-desktop.sh"

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

if [[ ${1:-} == --help || ${1:-} == -h ]]; then
    usage
    exit
fi
programs=$(cd "$project" && cd "${1:-build/release}/bin" && pwd)
enter_private_desktop "$@"

now_ms() {
    echo $(($(date +%s%N) / 1000000))
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
    local begin
    for ((i = 0; i < starts; i++)); do
        begin=$(now_ms)
        start_program "$programs"
        times+=($(($(now_ms) - begin)))
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

measure_start
start_program "$programs"
measure_idle
measure_receiving
stop_program
