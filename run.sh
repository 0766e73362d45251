#!/usr/bin/env bash
# Builds a release, scans a music folder and shows the collection; once it was scanned, the database
# alone is read.
#   ./run.sh [FOLDER]     without a folder a small sample library is made and scanned
# The collection of a folder of yours is kept where programs of yours keep their data; that of the
# samples stands apart, in the cache folder.
set -euo pipefail
cd "$(dirname "$0")"
here=$PWD

folder=
if [ $# -gt 1 ] || [[ "${1:-}" == -* ]]; then
    sed -n '2,6s/^# \{0,1\}//p' "$0"
    [[ "${1:-}" == -h || "${1:-}" == --help ]] && exit 0
    exit 2
elif [ $# -eq 1 ]; then
    folder=$(cd "$OLDPWD" && realpath -- "$1")
    [ -d "$folder" ] || { echo "run.sh: $folder is no folder" >&2; exit 4; }
fi

tools/packages.sh build >&2
cmake --preset release >/dev/null
cmake --build --preset release --parallel 2 >&2
bin=$here/build/release

qo=("$bin/host/qo")
if [ -z "$folder" ]; then
    samples=${XDG_CACHE_HOME:-$HOME/.cache}/qo-samples
    folder=$samples/music
    if [ ! -e "$samples/complete" ]; then
        rm -rf "$samples"
        mkdir -p "$samples"
        "$bin/tools/library/make_library" "$folder" --files 40 --seed 1 >&2
        touch "$samples/complete"
    fi
    qo+=(--data "$samples/data")
fi

show() {
    echo
    echo "\$ qo $*"
    "${qo[@]}" "$@"
}
# "qo roots" prints the folder after its kind.
if "${qo[@]}" roots ls 2>/dev/null | cut -c8- | grep -qxF -- "$folder" &&
    ! "${qo[@]}" status --json | grep -q '"unfinishedScan": *true'; then
    show load
else
    show scan "$folder"
fi
show ls
show tree
show status
