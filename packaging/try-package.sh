#!/usr/bin/env bash
# Installs the Debian package in a Debian with nothing else in it, starts the program there and
# lets it receive a file. Needs root, in a namespace of its own at least.
#
#   packaging/try-package.sh PACKAGE RELEASE     RELEASE: bookworm, trixie
set -euo pipefail

# shellcheck source=packaging/debian.sh
source "$(dirname "${BASH_SOURCE[0]}")/debian.sh"
end_together "$0" "$@"

package=$1
bare=$(bare_debian "$2")
root=$bare-try
home=/anna # a user's, in that Debian
mkdir -p "$root"
mount -t tmpfs -o mode=755 ferrylane "$root"
cp -a "$bare/." "$root"
mount -t proc proc "$root/proc"
mkdir -m 700 "$root$home"
cp "$package" "$root/ferrylane.deb"
cp -L /etc/resolv.conf "$root/etc/resolv.conf"
quietly inside "$root" apt-get -qq update
quietly inside "$root" apt-get -qq install --yes --no-install-recommends /ferrylane.deb

run() {
    inside "$root" env HOME="$home" XDG_RUNTIME_DIR="$home" "$@"
}

run ferrylane 2> /dev/null &
for ((i = 0; i < 200; i++)); do
    grep -qs 'Server ready' "$root$home/.local/state/Ferrylane/ferrylane.log" && break
    sleep 0.1
done
echo "a file" > "$root/file.txt"
run ferrylane-phone upload --local --name Phone /file.txt
cmp "$root/file.txt" "$root$home/Downloads/Ferrylane/Phone/file.txt"
# The second start ends the first.
run ferrylane --action=quit
wait %1
