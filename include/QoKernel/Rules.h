#pragma once

// Reorganize rules: where on the disk files belong and what they are called.
#include "Reorganize/AlbumTracksSeperateRule.h"
#include "Reorganize/ArtistTracksSeperateRule.h"
#include "Reorganize/FileNameCleaner.h"
#include "Reorganize/JingleSeperateRule.h"
#include "Reorganize/RenameRule.h"
#include "Reorganize/ReorganizeRule.h"
#include "Reorganize/ReorganizeRuleNodes.h"
#include "Reorganize/ReorganizeRuleXmlParser.h"
#include "Reorganize/ReorganizeUtils.h"
#include "Reorganize/RuleFileCheck.h"
#include "Reorganize/SeperateRule.h"
#include "Reorganize/SubdirRule.h"
