# Debians with nothing else in them, to try Ferrylane in. To be sourced; needs root, in a namespace
# of its own at least.
# shellcheck shell=bash

project=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
# What is in here may be deleted at any time.
debians=$project/build/debian

# end_together SCRIPT ARGUMENT...: starts the script again, unless this is the second time. Its
# mounts and processes end with it, however it ends.
end_together() {
    [[ -z ${FERRYLANE_NAMESPACES:-} ]] || return 0
    FERRYLANE_NAMESPACES=1 exec unshare --mount --pid --fork --kill-child "$@"
}

# quietly COMMAND...: says something only when it fails.
quietly() {
    local log
    log=$(mktemp)
    if ! "$@" > "$log" 2>&1; then
        tail -n 200 "$log"
        rm "$log"
        return 1
    fi
    rm "$log"
}

# inside ROOT COMMAND...: as if there were nothing but ROOT, and nothing of this environment.
inside() {
    local root=$1
    shift
    chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/home LC_ALL=C.UTF-8 \
        DEBIAN_FRONTEND=noninteractive QT_QPA_PLATFORM=offscreen "$@"
}

# bare_debian RELEASE: a folder with the smallest such Debian, which is not to be changed.
bare_debian() {
    local root=$debians/$1 mirror
    if [[ ! -d $root ]]; then
        mkdir -p "$debians"
        rm -rf --one-file-system "$root.part"
        # From where this system gets its packages.
        # shellcheck disable=SC2016 # apt-get puts in what it is
        mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' | head -n 1)
        quietly debootstrap --variant=minbase "$1" "$root.part" ${mirror:+"$mirror"} >&2 || return
        mv "$root.part" "$root"
    fi
    echo "$root"
}
