#pragma once

// The physical tree (CHD*) of folders and files.
#include "Physical/HDDirectory.h"
#include "Physical/HDFile.h"
#include "Physical/HDMusicFile.h"
#include "Physical/HDPictureFile.h"
#include "Physical/HDTextFile.h"
