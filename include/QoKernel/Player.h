#pragma once

// Data of the player (CMp*): playlists, sessions of recording, files converted in their own
// folders, and tracks that searches found.
#include "QoColl/Db/Records/QoInplaceFileDbItem.h"
#include "QoColl/Db/Records/QoPlaylistDbItem.h"
#include "QoColl/Db/Records/QoSessionDbItem.h"
#include "QoColl/Player/MpFileUtils.h"
#include "QoColl/Player/MpInplaceUtils.h"
#include "QoColl/Player/MpPlaylistUtils.h"
#include "QoColl/Player/MpSearchResultCollection.h"
#include "QoColl/Player/MpSearchResultUtils.h"
#include "QoColl/Player/MpSessionUtils.h"
#include "QoColl/Player/SearchResultDraggableObject.h"
