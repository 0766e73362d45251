#!/usr/bin/env bash
# Scans, rescans and starts MPD and the command on the same files in turn, and prints the ratios.
#   bench/peers.sh [--files N] [--seed S] [--runs R] [--work FOLDER] [--build FOLDER] [--music FOLDER]
# The rows go to standard output, in the form of docs/performance.md. Only the ratios last. MPD has a configuration, a
# socket and a database of its own below the work folder, plays to nowhere, and has ended when this ends.
set -euo pipefail
cd "$(dirname "$0")/.."

files=100000 seed=1 runs=3 build=build/bench work='' music=''
while [ $# -gt 0 ]; do
    [ $# -ge 2 ] || { echo "peers.sh: $1 needs a value" >&2; exit 2; }
    case $1 in
    --files) files=$2 ;;
    --seed) seed=$2 ;;
    --runs) runs=$2 ;;
    --work) work=$2 ;;
    --build) build=$2 ;;
    --music) music=$2 ;;
    *) echo "peers.sh: there is no option \"$1\"" >&2; exit 2 ;;
    esac
    shift 2
done

tools/packages.sh build peers >&2
if [ "$build" = build/bench ]; then
    cmake --preset bench >&2
    cmake --build --preset bench --parallel 2 >&2
fi
exec python3 bench/peers.py --build "$build" --work "${work:-$build/work}" --files "$files" --seed "$seed" \
    --runs "$runs" ${music:+--music "$music"}
