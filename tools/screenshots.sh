#!/usr/bin/env bash
# Makes the pictures in docs/screenshots. See --help.
set -euo pipefail

project=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
# shellcheck source=tools/private-desktop.sh
source "$project/tools/private-desktop.sh"

usage() {
    cat << 'END'
Usage: tools/screenshots.sh [BUILD]     BUILD: a build folder; build/release when not given

Shows the program on a screen in memory, with some transfers behind it, and takes a picture of
each window into docs/screenshots. Needs what the tests need, and imagemagick.
END
}

if [[ ${1:-} == --help || ${1:-} == -h ]]; then
    usage
    exit
fi
programs=$(cd "$project" && cd "${1:-build/release}/bin" && pwd)
pictures=$project/docs/screenshots
enter_private_desktop "$@"

# This computer's address, as it is at people's homes.
join_network() {
    ip link add home type veth peer name others
    ip address add 192.168.1.20/24 dev home
    ip link set home up
    ip link set others up
}

settings() {
    mkdir -p "$home/.config/Ferrylane"
    printf '[General]\nFerrylaneDeviceName=Office PC\n' > "$home/.config/Ferrylane/settings.ini"
}

# Makes the played phones of which the arguments are the names paired ones.
pair() {
    local key separator=[ name
    local file=$home/.local/share/Ferrylane/paired-targets-v2.json
    mkdir -p "${file%/*}"
    : > "$file"
    for name; do
        key=$(head -c 32 /dev/urandom | base64 | tr '+/' '-_' | tr -d '=')
        printf '%s{"name":"%s","baseURL":"http://192.168.1.77:8787","keyB64":"%s"}' \
            "$separator" "$name" "$key" >> "$file"
        separator=,
    done
    echo ']' >> "$file"
}

# file NAME SIZE: prints its path.
file() {
    mkdir -p "$home/files"
    truncate -s "$2" "$home/files/$1"
    echo "$home/files/$1"
}

receive() {
    "$programs/ferrylane-phone" upload --local --name 'Pixel 8' "$@" > /dev/null
}

# widest NAME: of the windows of that name, the one that is NAME's; by its width in points.
window_of_width() {
    local id
    for id in $(window '^Ferrylane'); do
        if [[ $(xdotool getwindowgeometry --shell "$id") == *WIDTH=$1$'\n'* ]]; then
            echo "$id"
            return
        fi
    done
    return 1
}

# shoot WIDTH FILE: the window of that width.
shoot() {
    wait_until window_of_width "$1"
    sleep 0.4
    import -window "$(window_of_width "$1")" "$pictures/$2.png"
}

main_panel=318
progress_window=340

shoot_receiving() {
    receive "$(file holiday.jpg 4231000)" "$(file 'boarding pass.pdf' 187300)"
    receive "$(file 'lecture recording.mp4' 6G)" &
    shoot "$progress_window" progress-window
    # Ends that transfer.
    xdotool mousemove --window "$(window_of_width "$progress_window")" 299 41 click 1
    wait $! || true
    receive "$(file notes.txt 2100)"
    sleep 2
    shoot "$main_panel" main-panel
}

shoot_menu() {
    local x y
    eval "$(xdotool getwindowgeometry --shell "$(window_of_width "$main_panel")")"
    x=$((X + 60)) y=$((Y + 530))
    xdotool mousemove "$x" "$y" click 3
    sleep 0.5
    import -window root -crop "240x200+$x+$((y - 190))" +repage "$pictures/menu.png"
    xdotool key Escape
}

join_network
settings
pair 'Pixel 8' 'Tablet'
mkdir -p "$pictures"
start_program "$programs"
shoot_receiving
shoot_menu
stop_program
