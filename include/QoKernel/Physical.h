#pragma once

// The physical tree (CHD*) of folders and files.
#include "Physical/DirLTNames.h"
#include "Physical/HDDirectory.h"
#include "Physical/HDFile.h"
#include "Physical/HDInplaceConvertedFile.h"
#include "Physical/HDMusicFile.h"
#include "Physical/HDOfflineFile.h"
#include "Physical/HDOtherFile.h"
#include "Physical/HDPictureFile.h"
#include "Physical/HDSearchResult.h"
#include "Physical/HDTextFile.h"
#include "Physical/SourceObject.h"
