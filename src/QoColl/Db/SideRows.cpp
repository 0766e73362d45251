#include "QoColl/Db/SideRows.h"

#include "Database/src/DbFacade/SQLiteQueryResult.h"
#include "QoColl/Db/QoCollDbUtils.h"
#include "QoColl/Db/Records/AcStreamDbItem.h"
#include "QoColl/Db/Records/CollInfoDbItem.h"
#include "QoColl/Db/Records/QoInplaceFileDbItem.h"
#include "QoColl/Db/Records/QoPlaylistDbItem.h"
#include "QoColl/Db/Records/QoSessionDbItem.h"
#include "QoColl/Db/Records/QoShareDbItem.h"
#include "QoColl/Db/Records/VelmoraFileParamsUtils.h"
#include "types/CharClass.h"

namespace qo
{
void readRow(QoSessionDbItem& item, const CSQLiteQueryResult& row)
{
    item.name = row.GetTextField(u"ST_NAME");
    item.source = CVelmoraFileParamsUtils::IntToEItemSource(row.GetIntField(u"ST_SOURCE"));
    item.startTime = fromTicks(row.GetInt64Field(u"ST_START_TIME"));
    item.endTime = fromTicks(row.GetInt64Field(u"ST_END_TIME"));
}

void readRow(QoPlaylistDbItem& item, const CSQLiteQueryResult& row)
{
    item.name = row.GetTextField(u"PL_NAME");
    item.tracks = CStringArray::split(row.GetTextField(u"PL_TRACK_LIST"), u';');
}

/// Lists of root folders and their types are texts with a line feed between the elements.
void readRow(CollInfoDbItem& item, const CSQLiteQueryResult& row)
{
    item.collId = row.GetTextField(u"CT_COLL_ID");
    item.scanTime = fromTicks(row.GetInt64Field(u"CT_SCAN_TIME"));
    item.rootDirs = CStringArray::split(row.GetTextField(u"CT_ROOT_DIRS"), u'\n');
    for (const CString& type : CStringArray::split(row.GetTextField(u"CT_ROOT_DIRS_TYPE"), u'\n'))
        item.rootDirTypes.Add(textToInt(type.view()));
    item.userName = row.GetTextField(u"CT_USER_NAME");
    item.modifiedTime = fromTicks(row.GetInt64Field(u"CT_MODIFIED_TIME"));
}

void readRow(AcStreamDbItem& item, const CSQLiteQueryResult& row)
{
    CQoCollDbUtils::GUIDFromString(row.GetTextField(u"AS_STREAM_ID"), item.streamId);
    item.velmoraId = row.GetTextField(u"AS_VELMORA_ID");
    item.hidden = row.GetBoolField(u"AS_HIDDEN");
    item.hiddenPath = row.GetTextField(u"AS_HIDDEN_PATH");
    item.streamType = row.GetIntField(u"AS_STREAM_TYPE");
    item.serverId = row.GetIntField(u"AS_SERVER_ID");
    item.stationName = row.GetTextField(u"AS_STATION_NAME");
    item.mirrorUrl = row.GetTextField(u"AS_MIRROR_URL");
    item.originalBitrate = row.GetIntField(u"AS_ORIGINAL_BITRATE");
    item.continuous = row.GetBoolField(u"AS_CONTINUOUS");
    item.encBitrate = row.GetIntField(u"AS_ENC_BITRATE");
}

void readRow(AcStreamTrackDbItem& item, const CSQLiteQueryResult& row)
{
    CQoCollDbUtils::GUIDFromString(row.GetTextField(u"AST_TRACK_ID"), item.trackId);
    item.streamVelmoraId = row.GetTextField(u"AST_STREAM_VELMORA_ID");
    item.trackVelmoraId = row.GetTextField(u"AST_TRACK_VELMORA_ID");
    item.params = row.GetTextField(u"AST_PARAMS");
}

void readRow(QoInplaceFileDbItem& item, const CSQLiteQueryResult& row)
{
    item.path = row.GetTextField(u"IN_PATH");
    item.createTime = fromTicks(row.GetInt64Field(u"IN_CREAT_TIME"));
    item.modifTime = fromTicks(row.GetInt64Field(u"IN_MODIF_TIME"));
    item.artist = row.GetTextField(u"IN_ARTIST");
    item.album = row.GetTextField(u"IN_ALBUM");
    item.title = row.GetTextField(u"IN_TITLE");
    item.genre = row.GetTextField(u"IN_GENRE");
    item.trackNumber = row.GetTextField(u"IN_TRACK_NUMBER");
    item.year = row.GetTextField(u"IN_YEAR");
    item.lyrics = row.GetTextField(u"IN_LYRICS");
    item.picturePath = row.GetTextField(u"IN_PICTURE_PATH");
    item.size = row.GetInt64Field(u"IN_SIZE");
    item.duration = row.GetIntField(u"IN_DURATION");
    item.velmoraId = row.GetTextField(u"IN_VELMORA_ID");
    item.params = row.GetTextField(u"IN_PARAMS");
}

void readRow(QoShareDbItem& item, const CSQLiteQueryResult& row)
{
    item.type = row.GetIntField(u"SH_TYPE");
    item.peer = row.GetTextField(u"SH_PEER");
    item.peerReceived = row.GetTextField(u"SH_PEER_RECEIVED");
    item.files = row.GetIntField(u"SH_FILES");
    item.enable = row.GetBoolField(u"SH_ENABLE");
    item.shareId = row.GetTextField(u"SH_SHARE_ID");
    item.oppositeShareId = row.GetTextField(u"SH_OPPOSITE_SHARE_ID");
    item.invitation = row.GetTextField(u"SH_INVITATION");
    item.initiator = row.GetBoolField(u"SH_INITIATOR");
    item.notify = row.GetBoolField(u"SH_NOTIFY");
}
} // namespace qo
