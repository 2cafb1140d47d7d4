#!/usr/bin/env bash
# How the program feels on a desktop: how long it takes to start, what it costs while nothing
# happens, and how busy its main thread is while it receives. See --help.
set -euo pipefail

project=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
# shellcheck source=tools/private-desktop.sh
source "$project/tools/private-desktop.sh"

usage() {
    cat << 'END'
Usage: bench/desktop.sh [BUILD]     BUILD: a build folder; build/bench when not given

Runs the program on a screen in memory, in a home folder and a network of its own. Prints the
median time from its start to "Server ready" and a visible main panel, its processor time and
memory while idle, how busy its main thread is while a file of 1 GiB comes in, and the median time
until the list of a hundred devices shows. Then the same with 100,000 logged transfers: the start,
and for how long one more transfer keeps the main thread busy.
END
}

starts=9
idle_seconds=20
upload_mebibytes=1024

if [[ ${1:-} == --help || ${1:-} == -h ]]; then
    usage
    exit
fi
programs=$(cd "$project" && cd "${1:-build/bench}/bin" && pwd)
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

# median_of COMMAND: runs it several times; prints the median of the milliseconds that each prints.
median_of() {
    local -a times=()
    for ((i = 0; i < starts; i++)); do
        "$@" > "$home/took"
        times+=("$(< "$home/took")")
    done
    mapfile -t times < <(printf '%s\n' "${times[@]}" | sort -n)
    echo "${times[starts / 2]} ms (median of $starts, ${times[0]} to ${times[starts - 1]} ms)"
}

time_start() {
    local begin
    begin=$(now_ms)
    start_program "$programs"
    echo $(($(now_ms) - begin))
    stop_program
}

time_devices() {
    local begin
    begin=$(now_ms)
    "$programs/ferrylane" --action=devices
    wait_until window 'Devices$'
    echo $(($(now_ms) - begin))
    xdotool search --name 'Devices$' windowclose
    while window 'Devices$' > /dev/null; do sleep 0.01; done
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

# The files of somebody who has used the program for years.
write_long_lists() {
    local data=$home/.local/share/Ferrylane
    mkdir -p "$data" "$home/.config/Ferrylane"
    awk 'BEGIN {
        for (i = 0; i < 100; i++) printf "%s{\"name\":\"Phone %d\",\"baseURL\":\"http://10.9.0.%d:8787\",\"keyB64\":\"%s\"}",
            i ? "," : "[", i, i + 1, "AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA"
        print "]"}' > "$data/paired-targets-v2.json"
    awk 'BEGIN {
        for (i = 0; i < 100000; i++) printf "%s{\"date\":%d,\"direction\":\"Received\",\"fileName\":\"IMG_%d.jpg\",\"peer\":\"\",\"result\":\"Completed\",\"size\":2345678}",
            i ? "," : "[", 700000000 + i, i
        print "]"}' > "$data/transfer-log-v1.json"
    printf '[General]\nFerrylaneTransferLogContinuous=true\n' > "$home/.config/Ferrylane/settings.ini"
}

measure_one_more() {
    local before
    sleep 3
    before=$(ticks "$program")
    echo "a file" > "$home/file"
    "$programs/ferrylane-phone" upload --local "$home/file" > /dev/null
    sleep 2
    echo "one more transfer: main thread busy for $((($(ticks "$program") - before) * 10)) ms"
}

echo "start to ready and shown: $(median_of time_start)"
start_program "$programs"
measure_idle
measure_receiving
stop_program
write_long_lists
echo "the same with 100,000 logged transfers: $(median_of time_start)"
start_program "$programs"
measure_one_more
echo "showing a hundred devices: $(median_of time_devices)"
stop_program
