# shellcheck shell=bash
# For scripts that show the program on a screen in memory, in a home folder, a network and a process
# space of their own, so that nothing of the user's is touched. To be sourced.

# enter_private_desktop ARGUMENT...: begins the calling script anew, with these arguments, inside.
# Then $home is the home folder; it and all processes go with the script.
enter_private_desktop() {
    if [[ -z ${FERRYLANE_PRIVATE_DESKTOP:-} ]]; then
        export FERRYLANE_PRIVATE_DESKTOP=1
        exec unshare --map-root-user --net --pid --fork --mount-proc "$0" "$@"
    fi
    home=$(mktemp -d)
    trap 'rm -rf "$home"' EXIT
    export HOME=$home XDG_RUNTIME_DIR=$home LC_ALL=C.UTF-8
    export DBUS_SYSTEM_BUS_ADDRESS=unix:path=$home/no-bus
    unset DBUS_SESSION_BUS_ADDRESS WAYLAND_DISPLAY XDG_CONFIG_HOME XDG_DATA_HOME XDG_STATE_HOME
    ip link set lo up
    start_screen
}

# Sets DISPLAY; there is a window manager with a tray.
start_screen() {
    Xvfb -displayfd 1 -screen 0 1280x800x24 -nolisten tcp -noreset > "$home/display" 2> /dev/null &
    wait_until test -s "$home/display"
    DISPLAY=:$(< "$home/display")
    export DISPLAY
    icewm > /dev/null 2>&1 &
    wait_until window '^TaskBar$'
}

# window NAME: the ids of the windows with this name (a regular expression) that can be seen; fails
# when there is none.
window() {
    xdotool search --onlyvisible --name "$1" 2> /dev/null
}

# wait_until COMMAND...: looks again every few milliseconds; ends the script when it takes too long.
wait_until() {
    local begin=$SECONDS
    until "$@" > /dev/null 2>&1; do
        if ((SECONDS - begin > 20)); then
            echo "${0##*/}: waited in vain for: $*" >&2
            exit 1
        fi
        sleep 0.005
    done
}

# start_program FOLDER: starts the program of that folder as $program; it is ready afterwards, and
# its main panel can be seen.
start_program() {
    log=$home/.local/state/Ferrylane/ferrylane.log
    rm -f "$log"
    "$1/ferrylane" 2> /dev/null &
    program=$!
    wait_until grep -q 'Server ready' "$log"
    wait_until window '^Ferrylane$'
}

stop_program() {
    kill "$program"
    wait "$program" || true
}
