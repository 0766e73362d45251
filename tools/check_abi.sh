#!/usr/bin/env bash
# Holds the library that tools/package.sh has built against the dump of the last release, packaging/abi: programs that
# were built with that release must go on working. Additions pass; what is gone or laid out otherwise fails.
#   tools/check_abi.sh             says what has changed
#   tools/check_abi.sh --renew     makes the dump anew, at a release
set -euo pipefail
cd "$(dirname "$0")/.."

tools/packages.sh packaging >&2
work=build/package
dump=packaging/abi/libqokernel.abi.xz
library=$(echo "$work"/qokernel/obj-*/src/libQoKernel.so.*.*.*)
headers=$work/qokernel/debian/libqokernel-dev/usr/include/QoKernel
[[ -f $library && -d $headers ]] || { echo "check_abi.sh: there is no built library; run tools/package.sh first" >&2; exit 1; }

# What stands in no public header is nobody's business. Two dumps are compared, not a dump and a library, since the
# reader of libraries and that of dumps see some templates differently.
abidw --headers-dir "$headers" --drop-private-types --exported-interfaces-only --no-elf-needed --no-corpus-path \
    --no-comp-dir-path --short-locs --out-file "$work/libqokernel.abi" "$library"

if [ "${1:-}" = --renew ]; then
    xz -9 --stdout "$work/libqokernel.abi" >"$dump"
    echo "check_abi.sh: $dump is that of the library as it stands" >&2
    exit 0
fi

what() { sed -n "s/^<abi-corpus .* architecture='\([^']*\)' soname='\([^']*\)'.*/\2 of \1/p" "$1"; }
xz --decompress --stdout "$dump" >"$work/last.abi"
last=$(what "$work/last.abi") now=$(what "$work/libqokernel.abi")
if [ "$last" != "$now" ]; then
    echo "check_abi.sh: the library is $now, the dump one of $last: they need not be alike" >&2
    exit 0
fi
if ! abidiff --suppressions packaging/abi/inside.suppr --leaf-changes-only --no-added-syms \
    "$work/last.abi" "$work/libqokernel.abi" >"$work/abi.txt"; then
    cat "$work/abi.txt" >&2
    echo "check_abi.sh: programs that were built with the last release would break by the changes above; take them" \
        "back, or raise the major version in CMakeLists.txt and the name libqokernel0 with it" >&2
    exit 1
fi
echo "check_abi.sh: programs that were built with the last release go on working" >&2
