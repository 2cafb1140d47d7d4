#!/usr/bin/env bash
# Builds Ferrylane and starts it. See --help.
set -euo pipefail

project=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

usage() {
    cat << 'END'
Usage: ./run.sh [ARGUMENT...]         start Ferrylane
       ./run.sh phone [ARGUMENT...]   start ferrylane-phone, which plays a phone
       ./run.sh --help

Installs the Debian packages that are missing (asking sudo where it must), builds what has
changed since last time into build/release, and hands the ARGUMENTs to the program.

Try it with two terminals: ./run.sh in the first, ./run.sh phone --help in the second.
Without a display, Ferrylane runs all the same, with windows that nobody sees.
Ctrl-C ends it.
END
}

say() {
    echo "$@" >&2
}

# Quiet unless it fails. One at a time, so that a second terminal waits for the first one's build.
build() {
    local log=$project/build/run.log
    mkdir -p "$project/build"
    [[ -x $project/build/release/bin/$program ]] \
        || say "Building $program; the first time takes a few minutes."
    (
        flock 9
        cd "$project"
        cmake --preset release && cmake --build --preset release --target ferrylane ferrylane-phone
    ) 9> "$project/build/run.lock" > "$log" 2>&1 && return
    cat "$log" >&2
    say "run.sh: the build failed"
    exit 1
}

program=ferrylane
case ${1:-} in
    --help | -h)
        usage
        exit
        ;;
    phone)
        program=ferrylane-phone
        shift
        ;;
esac

"$project/tools/install-packages.sh" build
build
# In place of this shell, so that Ctrl-C and SIGTERM reach the program itself.
exec "$project/build/release/bin/$program" "$@"
