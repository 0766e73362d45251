#!/usr/bin/env bash
# Installs the Debian packages that are missing, and only those.
#   tools/packages.sh build|tests|checks|bench|peers|fuzz|packaging...
set -euo pipefail

build=(g++ cmake ninja-build pkg-config libboost-dev libicu-dev libsqlite3-dev libtag1-dev libtinyxml-dev libssl-dev
 libcli11-dev libcurl4-openssl-dev libexpat1-dev libmicrohttpd-dev libmtp-dev libsystemd-dev nettle-dev nlohmann-json3-dev
 libmimalloc-dev python3)
tests=(libgtest-dev locales python3-mutagen kid3-cli ffmpeg sqlite3 attr zsh fish man-db libxml2-utils
 rclone apache2-bin supysonic dosfstools e2fsprogs dbus-daemon gnome-keyring python3-dbus python3-gi umockdev gir1.2-umockdev-1.0)
checks=(clang-format-14 clang-tidy-14 codespell git)
bench=(libbenchmark-dev rclone time)
peers=(mpd)
fuzz=(clang)
packaging=(debhelper dpkg-dev fakeroot lintian abigail-tools binutils mmdebstrap systemd xz-utils)

# What a name on the command line stands for.
wanted=()
for set in "$@"; do
    case $set in
    build) wanted+=("${build[@]}") ;;
    tests) wanted+=("${tests[@]}") ;;
    checks) wanted+=("${checks[@]}") ;;
    bench) wanted+=("${bench[@]}") ;;
    peers) wanted+=("${peers[@]}") ;;
    fuzz) wanted+=("${fuzz[@]}") ;;
    packaging) wanted+=("${packaging[@]}") ;;
    *) echo "packages.sh: there is no set \"$set\" (build, tests, checks, bench, peers, fuzz, packaging)" >&2; exit 2 ;;
    esac
done

command -v dpkg-query >/dev/null || { echo "packages.sh: this is no Debian system; install by hand: ${wanted[*]}" >&2; exit 1; }

missing=()
for package in "${wanted[@]}"; do
    state=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$state" = installed ] || missing+=("$package")
done
[ ${#missing[@]} -gt 0 ] || exit 0

root=()
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || {
        echo "packages.sh: these packages are missing, and neither root nor sudo is here to install them: ${missing[*]}" >&2
        exit 1
    }
    root=(sudo)
fi

install() {
    "${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${missing[@]}"
}

echo "Installing ${missing[*]}" >&2
# Stale package lists name files that the mirror no longer has: they are renewed when needed.
if ! apt-cache show "${missing[@]}" >/dev/null 2>&1 || ! install; then
    "${root[@]}" apt-get update
    install
fi
