#!/usr/bin/env bash
# Builds the benchmarks and compares the command with the floors it cannot beat.
#   bench/run.sh [--files N] [--seed S] [--runs R] [--scale K] [--work FOLDER]
# The table goes to standard output, in the form of docs/performance.md.
set -euo pipefail
cd "$(dirname "$0")/.."

tools/packages.sh build bench >&2
cmake --preset bench >&2
cmake --build --preset bench --parallel 2 >&2
exec python3 bench/compare.py --build build/bench "$@"
