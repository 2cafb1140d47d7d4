#!/usr/bin/env bash
# Installs what is missing of the named sections of packaging/debian-packages.txt.
# Says nothing and needs no rights when nothing is missing.
#
#   tools/install-packages.sh SECTION...
set -euo pipefail

project=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
list=$project/packaging/debian-packages.txt

die() {
    echo "install-packages.sh: $*" >&2
    exit 1
}

# The packages of the sections, one a line.
packages_of() {
    local section line_section package rest
    for section; do
        grep -q "^${section}[[:blank:]]" "$list" || die "$list has no section '$section'"
        while read -r line_section package rest; do
            if [[ $line_section == "$section" ]]; then echo "$package"; fi
        done < "$list"
    done
}

is_installed() {
    [[ $(dpkg-query -W -f '${db:Status-Status}' "$1" 2> /dev/null) == installed ]]
}

as_root() {
    if [[ $(id -u) -eq 0 ]]; then
        "$@"
    else
        sudo "$@"
    fi
}

# Quiet unless it fails. Waits for another package manager that is at work.
run_apt() {
    local log
    log=$(mktemp)
    if ! as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get -qq -o DPkg::Lock::Timeout=300 -o Dpkg::Use-Pty=0 "$@" > "$log" 2>&1; then
        cat "$log" >&2
        rm -f "$log"
        die "apt-get $1 failed"
    fi
    rm -f "$log"
}

main() {
    local wanted package
    local -a missing=()
    [[ $# -gt 0 ]] || die "which section? (build, test, check)"
    wanted=$(packages_of "$@")
    command -v dpkg-query > /dev/null \
        || die "this is no Debian system; install the equivalents of:" "${wanted//$'\n'/ }"

    for package in $wanted; do
        is_installed "$package" || missing+=("$package")
    done
    [[ ${#missing[@]} -gt 0 ]] || return 0

    if [[ $(id -u) -ne 0 ]] && ! command -v sudo > /dev/null; then
        die "these packages are missing, and there is neither root nor sudo to install them:" \
            "${missing[*]}"
    fi
    echo "Installing packages: ${missing[*]}" >&2
    run_apt update
    run_apt install --yes --no-install-recommends "${missing[@]}"
}

main "$@"
