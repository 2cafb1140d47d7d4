#!/usr/bin/env bash
# Installs the Debian package in a Debian with nothing else in it, starts the program there and
# lets it receive a file. Needs root, in a namespace of its own at least.
#
#   packaging/try-package.sh PACKAGE
set -euo pipefail

if [[ -z ${FERRYLANE_TRYING_PACKAGE:-} ]]; then
    export FERRYLANE_TRYING_PACKAGE=1
    # Mounts and processes end with it.
    exec unshare --mount --pid --fork "$0" "$(realpath "$1")"
fi

package=$1
user=anna # her home folder in that Debian
root=$(mktemp -d)
trap 'umount -l "$root"; rmdir "$root"' EXIT
mount -t tmpfs -o mode=755 ferrylane "$root"

inside() {
    chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME="/$user" LC_ALL=C.UTF-8 \
        DEBIAN_FRONTEND=noninteractive XDG_RUNTIME_DIR="/$user" QT_QPA_PLATFORM=offscreen "$@"
}

quietly() {
    "$@" > "$root.log" 2>&1 || {
        tail -n 30 "$root.log"
        return 1
    }
    rm -f "$root.log"
}

# From where this system gets its packages.
# shellcheck disable=SC2016 # apt-get puts in what it is
mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' | head -n 1)
quietly debootstrap --variant=minbase bookworm "$root" ${mirror:+"$mirror"}
mount -t proc proc "$root/proc"
mkdir -m 700 "$root/$user"
cp "$package" "$root/ferrylane.deb"
quietly inside apt-get -qq install --yes --no-install-recommends /ferrylane.deb

inside ferrylane 2> /dev/null &
for ((i = 0; i < 200; i++)); do
    grep -qs 'Server ready' "$root/$user/.local/state/Ferrylane/ferrylane.log" && break
    sleep 0.1
done
echo "a file" > "$root/file.txt"
inside ferrylane-phone upload --local --name Phone /file.txt
cmp "$root/file.txt" "$root/$user/Downloads/Ferrylane/Phone/file.txt"
# The second start ends the first.
inside ferrylane --action=quit
wait %1
