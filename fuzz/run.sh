#!/usr/bin/env bash
# Builds every fuzz target and runs each for some seconds from its corpus; what breaks one is kept
# in build/fuzz/found.
#   fuzz/run.sh [SECONDS]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}

tools/packages.sh build fuzz >&2
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --parallel 2
mkdir -p build/fuzz/found
for target in build/fuzz/fuzz/*Fuzz; do
    name=$(basename "$target")
    mkdir -p "build/fuzz/corpus/$name"
    echo "== $name"
    "$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=0 -verbosity=0 \
        -artifact_prefix=build/fuzz/found/ "build/fuzz/corpus/$name" "fuzz/corpus/$name"
done
