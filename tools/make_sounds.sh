#!/bin/sh
# Makes the base sounds and cover pictures that the tests and make_library start from. They are
# committed; run this only to change them. Needs ffmpeg, wavpack and musepack-tools.
#   tools/make_sounds.sh [FOLDER]
set -eu

folder=${1:-$(dirname "$0")/../tests/data/sounds}
mkdir -p "$folder"
cd "$folder"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# encode OUT RATE SECONDS OPTION...: a falling tone, mono, without any tag.
encode() {
    out=$1 rate=$2 seconds=$3
    shift 3
    ffmpeg -hide_banner -loglevel error -y -f lavfi \
        -i "aevalsrc=0.3*sin(2*PI*(440-200*t)*t):s=$rate:d=$seconds" \
        -map_metadata -1 -fflags +bitexact -flags:a +bitexact "$@" "$out"
}

encode sound.mp3 22050 0.6 -c:a libmp3lame -b:a 24k -id3v2_version 0 -write_id3v1 0
encode vbr.mp3 22050 0.6 -c:a libmp3lame -q:a 9 -id3v2_version 0 -write_id3v1 0
encode sound.mp2 24000 0.5 -c:a mp2 -b:a 32k -f mp2
encode sound.flac 8000 0.4 -c:a flac -compression_level 8 -metadata_header_padding 1024
encode sound.ogg 8000 0.5 -c:a libvorbis -q:a 0
encode sound.oga 8000 0.4 -c:a flac -f ogg
encode sound.opus 16000 0.5 -c:a libopus -b:a 12k
encode sound.spx 8000 0.5 -c:a libspeex -b:a 8k -f ogg
encode sound.m4a 16000 0.5 -c:a aac -b:a 24k -movflags +faststart
encode alac.m4a 8000 0.4 -c:a alac -movflags +faststart -f ipod
encode sound.wma 16000 0.5 -c:a wmav2 -b:a 24k
encode sound.wav 8000 0.3 -c:a pcm_s16le
encode sound.aiff 8000 0.3 -c:a pcm_s16be
encode sound.tta 8000 0.3 -c:a tta
encode "$work/sound.wav" 8000 0.3 -c:a pcm_s16le
wavpack -q -y -h "$work/sound.wav" -o sound.wv
encode "$work/cd.wav" 44100 0.5 -c:a pcm_s16le
mpcenc --silent --overwrite --quality 2 "$work/cd.wav" sound.mpc >/dev/null

# No free encoder writes Monkey's Audio: a descriptor, a header of half a second at 8000 Hz, one
# seek table entry and silence that no one decodes.
python3 - <<'PYTHON'
import struct
frames = bytes(64)
descriptor = struct.pack('<4sHHIIIIIII16s', b'MAC ', 3990, 0, 52, 24, 4, 0, len(frames), 0, 0, bytes(16))
header = struct.pack('<HHIIIHHI', 2000, 0, 73728, 4000, 1, 16, 1, 8000)
table = struct.pack('<I', 52 + 24 + 4)
open('sound.ape', 'wb').write(descriptor + header + table + frames)
PYTHON

# cover OUT COLOUR SIZE: a plain square with a lighter one in it.
cover() {
    ffmpeg -hide_banner -loglevel error -y -f lavfi -i "color=$2:s=$3x$3" \
        -vf "drawbox=x=iw/4:y=ih/4:w=iw/2:h=ih/2:color=white@0.5:t=fill" \
        -frames:v 1 -map_metadata -1 -fflags +bitexact -flags:v +bitexact "$1"
}
cover red.jpg red 32
cover blue.png blue 32
cover green.jpg green 48
