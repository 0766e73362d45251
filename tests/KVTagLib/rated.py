"""Writes album artist, disc, comment, rating and count of plays into a file, with mutagen, under the
names that programs use in its format; seven plays, and a rating of four stars by one program."""

import sys

import mutagen
from mutagen.id3 import COMM, POPM, TPE2, TPOS, TXXX
from mutagen.mp4 import MP4FreeForm

file = mutagen.File(sys.argv[1])
if file.tags is None:
    file.add_tags()
kind = type(file).__name__
if kind in ("MP3", "WAVE", "AIFF"):
    file.tags.add(TPE2(encoding=3, text="Various"))
    file.tags.add(TPOS(encoding=3, text="1/2"))
    file.tags.add(COMM(encoding=3, lang="eng", desc="iTunNORM", text=" 0000"))
    file.tags.add(COMM(encoding=3, lang="eng", desc="", text="fine"))
    file.tags.add(POPM(email="first", rating=0, count=3))
    file.tags.add(POPM(email="second", rating=196, count=7))
    file.tags.add(TXXX(encoding=3, desc="FMPS_Rating", text="0.2"))
elif kind == "MP4":
    file.tags["aART"] = ["Various"]
    file.tags["disk"] = [(1, 2)]
    file.tags["\xa9cmt"] = ["fine"]
    own = "----:com.apple.iTunes:"
    file.tags[own + "iTunNORM"] = [MP4FreeForm(b" 0000")]
    file.tags[own + "FMPS_Rating"] = [MP4FreeForm(b"0.8")]
    file.tags[own + "FMPS_Playcount"] = [MP4FreeForm(b"7.0")]
elif kind == "ASF":
    file.tags["WM/AlbumArtist"] = "Various"
    file.tags["WM/PartOfSet"] = "1/2"
    file.tags["Description"] = "fine"
    file.tags["WM/SharedUserRating"] = 75
    file.tags["FMPS/Playcount"] = "7.0"
elif kind in ("MonkeysAudio", "WavPack", "Musepack"):
    file.tags["Album Artist"] = "Various"
    file.tags["Disc"] = "1/2"
    file.tags["Comment"] = "fine"
    file.tags["Rating"] = "80"
    file.tags["FMPS_Playcount"] = "7"
else:
    file.tags["ALBUMARTIST"] = "Various"
    file.tags["DISCNUMBER"] = "1"
    file.tags["DISCTOTAL"] = "2"
    file.tags["COMMENT"] = "fine"
    file.tags["RATING"] = "4"
    file.tags["FMPS_PLAYCOUNT"] = "7.0"
file.save()
