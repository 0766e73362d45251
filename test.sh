#!/usr/bin/env bash
# Installs what is missing, builds with warnings as errors and runs every test.
#   ./test.sh [ctest option...]
set -euo pipefail
cd "$(dirname "$0")"

tools/packages.sh build tests >&2
cmake --preset dev
cmake --build --preset dev --parallel 2
ctest --preset dev --parallel 2 "$@"
