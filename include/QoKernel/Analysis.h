#pragma once

// The analysis of names, which finds artist and album for files beside music that have no tags
// (CNS*).
#include "Analyze/NSAnalyzer.h"
#include "Analyze/NSAtom.h"
#include "Analyze/NSDirMusicFilesInfo.h"
#include "Analyze/NSNamePattern.h"
#include "Analyze/NSUtils.h"
#include "Analyze/Placement.h"
#include "Physical/DirLTNames.h"
