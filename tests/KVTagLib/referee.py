"""Prints what mutagen, a tag library of its own descent, finds in a file: one "key=value" a line.

Values of a list are joined by "|", pictures appear as "<type> <mime> <size>". The first line is
"format=...". ID3 frames are shown as they stand, "version=" tells the version of the tag.
"""

import base64
import struct
import sys

import mutagen
from mutagen.aiff import AIFF
from mutagen.apev2 import APEv2, APENoHeaderError
from mutagen.flac import Picture
from mutagen.id3 import ID3, ID3NoHeaderError
from mutagen.wave import WAVE


def clean(text):
    return str(text).replace("\n", "\\n")


def show(key, value):
    if not isinstance(value, list):
        value = [value]
    text = "|".join(clean(v) for v in value)
    if text:
        print("%s=%s" % (key, text))


def show_picture(picture):
    print("picture=%d %s %d" % (picture.type, picture.mime, len(picture.data)))


def show_id3(tags):
    print("version=%d.%d" % tags.version[:2])
    for key in sorted(tags.keys()):
        frame = tags[key]
        if frame.FrameID in ("APIC", "PIC"):
            show_picture(frame)
        elif hasattr(frame, "text"):
            show(key, frame.text)
        elif hasattr(frame, "data"):
            show(key, len(frame.data))
        else:
            show(key, frame)


def show_mp4(tags):
    for key in sorted(tags.keys()):
        values = tags[key]
        if key == "covr":
            for cover in values:
                print("picture=%d %d" % (cover.imageformat, len(cover)))
        elif key == "trkn" or key == "disk":
            show(key, ["%d/%d" % pair for pair in values])
        else:
            values = values if isinstance(values, list) else [values]
            show(key, [v.decode() if isinstance(v, bytes) else v for v in values])


def main(path):
    file = mutagen.File(path)
    print("format=%s" % type(file).__name__)
    try:
        in_chunk = isinstance(file, (WAVE, AIFF))
        show_id3(file.tags if in_chunk else ID3(path, translate=False, v2_version=3))
    except (ID3NoHeaderError, AttributeError):
        pass
    if type(file).__name__ == "MP3":
        try:
            for key, value in sorted(APEv2(path).items()):
                show("APE " + key, list(value) if value.kind == 0 else len(bytes(value)))
        except APENoHeaderError:
            pass
    elif type(file).__name__ == "MP4":
        show_mp4(file.tags or {})
    elif file.tags is not None and not isinstance(file, (WAVE, AIFF)) and type(file).__name__ != "TrueAudio":
        for key in sorted(set(file.tags.keys())):
            value = file.tags[key]
            kind = getattr(value, "kind", 0)
            if kind == 1:
                show(key, len(bytes(value)))
            elif kind == 2:
                show(key, value)
            elif key.lower() == "metadata_block_picture":
                for entry in value:
                    show_picture(Picture(base64.b64decode(entry)))
            elif key == "WM/Picture":
                for picture in value:
                    # A type and the size of what follows stand ahead of it.
                    kind, size = struct.unpack_from("<BI", picture.value)
                    print("picture=%d %d" % (kind, size))
            else:
                show(key, [v for v in value])
    for picture in getattr(file, "pictures", []):
        show_picture(picture)


main(sys.argv[1])
