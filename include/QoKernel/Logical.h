#pragma once

// The logical tree (CLT*): tracks, albums, artists, genres, lyrics and pictures.
#include "Logical/LTAlbum.h"
#include "Logical/LTArtist.h"
#include "Logical/LTGenre.h"
#include "Logical/LTLyrics.h"
#include "Logical/LTManager.h"
#include "Logical/LTPicture.h"
#include "Logical/LTTrack.h"
