#pragma once

// The analysis of names: what lies beside music finds its artist and album.
#include "Analyze/DirLTNames.h"
#include "Analyze/NSAnalyzer.h"
#include "Analyze/NSAtom.h"
#include "Analyze/NSDirMusicFilesInfo.h"
#include "Analyze/NSNamePattern.h"
#include "Analyze/NSUtils.h"
#include "Analyze/Placement.h"
