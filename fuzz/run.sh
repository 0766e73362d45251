#!/usr/bin/env bash
# Builds every fuzz target and runs each for some seconds from its corpus, two at a time; what breaks
# one is kept in build/fuzz/found.
#   fuzz/run.sh [SECONDS]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}

tools/packages.sh build fuzz >&2
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --parallel 2 --target fuzz_targets
mkdir -p build/fuzz/found

# One target, quietly unless it breaks.
fuzz() {
    local target=$1 seconds=$2 name log
    name=$(basename "$target")
    log=build/fuzz/$name.log
    mkdir -p "build/fuzz/corpus/$name"
    if "$target" -max_total_time="$seconds" -timeout=60 -rss_limit_mb=2048 -print_final_stats=1 -verbosity=0 \
        -artifact_prefix=build/fuzz/found/ "build/fuzz/corpus/$name" "fuzz/corpus/$name" >"$log" 2>&1; then
        echo "$name: $(sed -n 's/^stat::number_of_executed_units: *//p' "$log") inputs"
    else
        echo "$name breaks:" && cat "$log"
        return 1
    fi
}
export -f fuzz
printf '%s\0' build/fuzz/fuzz/*Fuzz | xargs -0 -P 2 -I '{}' bash -c 'fuzz "$1" "$2"' - '{}' "$seconds"
