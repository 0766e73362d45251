#!/usr/bin/env bash
# Makes the Debian packages qo, libqokernel0 and libqokernel-dev of the tree as it stands, and has lintian and the ABI
# check look at them.
#   tools/package.sh [FOLDER]     where the packages go; build/packages if none is named
# debhelper makes them rather than CPack: it brings the compressed documents, stripped files, checksums and dependencies
# of the libraries that lintian asks for, and packaging/debian says only what is special here. The version is that of
# CMakeLists.txt.
set -euo pipefail
out=$(realpath -m -- "${1:-$(dirname "$0")/../build/packages}")
cd "$(dirname "$0")/.."

tools/packages.sh build packaging >&2
version=$(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
[ -n "$version" ] || { echo "package.sh: CMakeLists.txt names no version" >&2; exit 1; }

# The packages are built in a copy of what goes into them, since debhelper writes beside its sources. What an earlier run
# has compiled is kept.
work=build/package
tree=$work/qokernel
mkdir -p "$tree"
find "$tree" -mindepth 1 -maxdepth 1 ! -name 'obj-*' -exec rm -rf {} +
rm -f "$work"/*.*
cp -a CMakeLists.txt cmake host include packaging src tools "$tree"
mv "$tree/packaging/debian" "$tree"
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct 2>/dev/null || date +%s)}
export SOURCE_DATE_EPOCH
cat >"$tree/debian/changelog" <<CHANGELOG
qokernel ($version) unstable; urgency=medium

  * Version $version.

 -- $(sed -n 's/^Maintainer: //p' packaging/debian/control)  $(date -uRd "@$SOURCE_DATE_EPOCH")
CHANGELOG

# debhelper builds with an empty home folder.
if command -v ccache >/dev/null; then
    CCACHE_DIR=$(ccache --get-config cache_dir)
    export CCACHE_DIR
fi
echo "Building the packages of version $version; $work/build.log has the details" >&2
if ! (cd "$tree" && DEB_BUILD_OPTIONS="noautodbgsym ${DEB_BUILD_OPTIONS:-}" \
    dpkg-buildpackage --build=binary --no-sign --no-pre-clean) >"$work/build.log" 2>&1; then
    tail -n 40 "$work/build.log" >&2
    echo "package.sh: the packages could not be built; the end of $work/build.log stands above" >&2
    exit 1
fi

lintian --fail-on error --allow-root "$work"/*.changes >&2
mkdir -p "$out"
rm -f "$out"/{qo,libqokernel0,libqokernel-dev}_*.deb
mv "$work"/*.deb "$out"
ls "$out"/*.deb
tools/check_abi.sh
