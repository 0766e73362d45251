#!/usr/bin/env bash
# Installs the packages that tools/package.sh has made into a fresh root, uses the command, builds a small host with the
# development package, upgrades, removes and purges them, and finds nothing left. Takes about a minute.
#   tools/check_package.sh [--here] [FOLDER]     the packages; build/packages if no folder is named
# The root is a fresh Debian of mmdebstrap where that and its mirror are in reach. Otherwise, and with --here, it holds
# the packages alone, which dpkg sets up there and which use the libraries of this system.
set -euo pipefail

say() { echo "check_package.sh: $*" >&2; }
fail() { say "$*" && exit 1; }

# A command that is quiet as long as it succeeds.
quietly() {
    "$@" >"$work/step.log" 2>&1 || { cat "$work/step.log" >&2; fail "\"$*\" failed; what it says stands above"; }
}

# Makes of each package one of the next version with the same files.
make_next() {
    local package folder
    mkdir "$work/next"
    for package in "$work"/packages/*.deb; do
        folder=$work/next/$(basename "$package" .deb)
        dpkg-deb -R "$package" "$folder"
        sed -i "s/^Version: .*/&+next/; s/(= \($version\))/(= \1+next)/g" "$folder/DEBIAN/control"
        quietly dpkg-deb --root-owner-group -b "$folder" "$folder.deb"
        rm -r "$folder"
    done
}

check_service() {
    dpkg-deb -x "$work"/packages/qo_*.deb "$work/unpacked"
    sed -i "s,^ExecStart=/usr,ExecStart=$work/unpacked/usr," "$work/unpacked/usr/lib/systemd/user/qo-watch.service"
    XDG_RUNTIME_DIR=$work quietly systemd-analyze --user --man=no verify \
        "$work/unpacked/usr/lib/systemd/user/qo-watch.service"
    say "systemd takes the service"
}

# What follows runs in the fresh root ($root is empty) or beside it.
installed() { dpkg-query --admindir="$root/var/lib/dpkg" -W -f '${Version}' "$1" 2>/dev/null; }
everything() {
    find "$root/" -xdev \( -path "$root/tmp" -o -path "$root/proc" -o -path "$root/sys" -o -path "$root/dev" \
        -o -path "$root/run" -o -path "$root/var/cache" -o -path "$root/var/log" -o -path "$root/var/lib/apt" \
        -o -path "$root/var/lib/dpkg/*" ! -path "$root/var/lib/dpkg/info*" \) -prune -o -print | sort
}
put() {
    if [ -z "$root" ]; then
        quietly apt-get install -y --no-install-recommends "$@"
    else
        quietly "${dpkg[@]}" -i "$@"
    fi
}
qo() { "$root/usr/bin/qo" --data "$work/data" "$@"; }

use_command() {
    qo version >"$work/version.log" || fail "the command does not start"
    grep -qF "qo ${version}," "$work/version.log" || fail "the command is of another version: $(cat "$work/version.log")"
    quietly qo scan "$work/sounds"
    local files
    files=$(find "$work/sounds" -type f | wc -l)
    [ "$(qo ls --json | wc -l)" -eq "$files" ] || fail "the command does not show the $files files that it has scanned"
    quietly qo device
    say "the command scans $files files and shows them"
}

build_host() {
    quietly cmake -S "$work/install" -B "$work/host" -DCMAKE_PREFIX_PATH="$root/usr"
    quietly cmake --build "$work/host"
    mkdir "$work/host-data"
    quietly "$work/host/host" "$work/host-data"
    say "a host is built with the development package and runs"
}

check() {
    export LC_ALL=C.UTF-8 HOME=$work DEBIAN_FRONTEND=noninteractive
    everything >"$work/before"
    put "$work"/packages/{qo,libqokernel0}_*.deb
    say "qo and libqokernel0 are installed"
    use_command
    put "$work"/packages/libqokernel-dev_*.deb
    build_host
    put "$work"/next/*.deb
    [ "$(installed qo)" = "$version+next" ] || fail "qo is still of version $(installed qo) after the upgrade"
    quietly qo ls
    quietly "$work/host/host" "$work/host-data"
    say "the packages are upgraded, and the command and the host run"
    quietly "${dpkg[@]}" --remove qo libqokernel0 libqokernel-dev
    quietly "${dpkg[@]}" --purge qo libqokernel0 libqokernel-dev
    [ -n "$root" ] || quietly apt-get autoremove --purge -y
    everything >"$work/after"
    diff "$work/before" "$work/after" >"$work/left" || { cat "$work/left" >&2; fail "removing leaves the paths above"; }
    [ -n "$(find "$work/data" -name qodb)" ] || fail "removing takes the collection of the user"
    say "the packages are removed, and nothing of them is left but the user's own collection"
}

if [ "${1:-}" = --inside ]; then
    root='' work=/tmp/check version=$2 dpkg=(dpkg)
    check
    exit 0
fi

way=mmdebstrap
[ "${1:-}" != --here ] || { way=here && shift; }
folder=$(realpath -- "${1:-$(dirname "$0")/../build/packages}")
cd "$(dirname "$0")/.."
ls "$folder"/{qo,libqokernel0,libqokernel-dev}_*.deb >/dev/null || fail "$folder lacks packages; run tools/package.sh first"
tools/packages.sh build packaging >&2

work=$(mktemp -d --suffix=.check)
trap 'rm -rf "$work"' EXIT
mkdir "$work/packages"
cp "$folder"/{qo,libqokernel0,libqokernel-dev}_*.deb "$work/packages"
cp -r tests/install tests/data/sounds tools/check_package.sh "$work"
chmod -R a+rX "$work"
version=$(dpkg-deb -f "$work"/packages/qo_*.deb Version)
make_next
check_service

suite=$(. /etc/os-release && echo "$VERSION_CODENAME")
if [ "$way" = mmdebstrap ] && mmdebstrap --simulate --variant=apt "$suite" >"$work/step.log" 2>&1; then
    say "a fresh Debian is made"
    # shellcheck disable=SC2016 # the hooks' own shell knows the root
    mmdebstrap --quiet --variant=apt --format=null --include=g++,cmake,make "$suite" /dev/null \
        --customize-hook='mkdir "$1/tmp/check"' --customize-hook="cp -r $work/. \"\$1/tmp/check\"" \
        --customize-hook="chroot \"\$1\" bash /tmp/check/check_package.sh --inside $version"
else
    say "no fresh Debian is made; the libraries of this system are used"
    root=$work/root
    dpkg=(dpkg --root="$root" --force-not-root)
    [ "$(id -u)" -eq 0 ] || dpkg=(fakeroot "${dpkg[@]}")
    mkdir -p "$root/var/lib/dpkg/"{info,updates,triggers}
    cp /var/lib/dpkg/status "$root/var/lib/dpkg"
    echo 1 >"$root/var/lib/dpkg/info/format"
    LD_LIBRARY_PATH=$root/usr/lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)
    export LD_LIBRARY_PATH
    check
fi
