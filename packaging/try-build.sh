#!/usr/bin/env bash
# Builds Ferrylane in a Debian of its own, where a warning is an error, makes the package, installs
# it and lets the end-to-end tests drive what it has installed; prints what they say. Needs root, in a
# namespace of its own at least.
#
#   packaging/try-build.sh RELEASE     RELEASE: trixie
#
# That Debian is build/debian/RELEASE-build. It is kept, and with it what has been built in its /build.
set -euo pipefail

# shellcheck source=packaging/debian.sh
source "$(dirname "${BASH_SOURCE[0]}")/debian.sh"
end_together "$0" "$@"

bare=$(bare_debian "$1")
root=$bare-build
new=$root
if [[ ! -d $root ]]; then
    new=$root.part
    rm -rf --one-file-system "$new"
    cp -a "$bare" "$new"
fi

mount -t proc proc "$new/proc"
mount --rbind /sys "$new/sys"
mount --rbind /dev "$new/dev"
mkdir -p "$new/ferrylane"
mount --bind -o ro "$project" "$new/ferrylane"
cp -L /etc/resolv.conf "$new/etc/resolv.conf"
quietly inside "$new" /ferrylane/tools/install-packages.sh build test
[[ $new == "$root" ]] || mv "$new" "$root"
# The tests change how mounts spread, which takes a root that is a mount itself.
mount --rbind "$root" "$root"

rm -f "$root"/build/*.deb
quietly inside "$root" cmake -S /ferrylane -B /build --preset release \
    -D FERRYLANE_WERROR=ON -D FERRYLANE_TESTS=ON -D FERRYLANE_TESTED_PROGRAMS=/usr/bin \
    -D CMAKE_SKIP_INSTALL_ALL_DEPENDENCY=ON
quietly inside "$root" cmake --build /build -j "$(nproc)" \
    --target ferrylane ferrylane-phone ferrylane_test_e2e -- -k 0
quietly inside "$root" env --chdir=/build cpack
quietly inside "$root" sh -c 'apt-get -qq install --yes --reinstall /build/*.deb'
inside "$root" ctest --test-dir /build -j "$(nproc)" --label-regex e2e --no-tests=error --output-on-failure
