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

# window_of_width WIDTH: the id of this program's window that is so wide, in points.
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

# Opens the menu above the place at $x, $y, which is one of the main panel's.
open_menu() {
    eval "$(xdotool getwindowgeometry --shell "$(window_of_width "$main_panel")")"
    x=$((X + 60)) y=$((Y + 530))
    xdotool mousemove "$x" "$y" click 3
    sleep 0.5
}

shoot_menu() {
    local x y
    open_menu
    import -window root -crop "240x200+$x+$((y - 190))" +repage "$pictures/menu.png"
    xdotool key Escape
}

# click_panel X Y: at a place of the main panel.
click_panel() {
    xdotool mousemove --window "$(window_of_width "$main_panel")" "$1" "$2" click 1
}

# press_after COUNT KEY: presses the button that has the focus after so many times this key.
press_after() {
    xdotool key --repeat "$1" --delay 50 "$2" key space
}

# shoot_and_close WIDTH FILE
shoot_and_close() {
    shoot "$1" "$2"
    xdotool windowfocus --sync "$(window_of_width "$1")" key Escape
    sleep 0.3
}

# shoot_dialog FILE: what has the focus now, and closes it.
shoot_dialog() {
    sleep 1
    import -window "$(xdotool getactivewindow)" "$pictures/$1.png"
    xdotool key Escape
    sleep 0.3
}

shoot_panels() {
    click_panel 237 152
    shoot_and_close 360 qr-and-address
    click_panel 282 38
    shoot 540 info-and-settings
    # From the path at the top to "Feedback...", and from there to "Devices...".
    press_after 5 shift+Tab
    shoot_dialog feedback
    press_after 6 shift+Tab
    shoot_and_close 460 devices
    xdotool windowfocus --sync "$(window_of_width 540)" key Escape
    click_panel 60 115
    shoot_dialog device-name
}

# The menu's fourth entry; without a camera the program asks first.
shoot_pairing() {
    local x y
    open_menu
    xdotool key --delay 50 Down Down Down Down Return
    sleep 1
    # "Pair without camera..."
    xdotool key --delay 50 Tab Return
    shoot_and_close 520 pair-device
}

shoot_sending() {
    click_panel 159 312
    sleep 1
    xdotool type --delay 20 "$home/files/notes.txt"
    xdotool key Return
    shoot_dialog send-to
}

join_network
settings
pair 'Pixel 8' 'Tablet'
mkdir -p "$pictures"
start_program "$programs"
shoot_receiving
shoot_menu
shoot_panels
shoot_pairing
shoot_sending
stop_program
