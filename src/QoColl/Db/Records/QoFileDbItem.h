#pragma once

#include "QoColl/Db/Records/Forward.h"
#include "QoColl/Db/Records/ItemSource.h"
#include "types/FilePath.h"
#include "types/FileTime.h"
#include "types/LastingId.h"
#include "types/String.h"

#include <cstdint>

/// The bits of QoFileDbItem::flags: two fields (media and music) with one value each, and a single
/// bit. A field is cleared with its mask before a value is set.
namespace qo::fileFlag
{
constexpr unsigned audio = 1;
constexpr unsigned video = 2;
constexpr unsigned mediaMask = 3; ///< with neither value it is no media file
constexpr unsigned music = 8;
constexpr unsigned notMusic = 16;
constexpr unsigned musicMask = 24;
constexpr unsigned purchased = 32; ///< set by the host; the kernel only reads it
} // namespace qo::fileFlag

/// What the next save does with a record: nothing, INSERT, UPDATE or DELETE.
namespace qo::dbState
{
constexpr int unchanged = 0;
constexpr int added = 1;
constexpr int modified = 2;
constexpr int deleted = 3;
} // namespace qo::dbState

/// The record of one file as FILE_T stores it. It is shared by the collection's array and the file
/// object in the tree, so both see a change. To be saved, a change must also set dbState.
struct QoFileDbItem
{
    // Small members stand in pairs, so that nothing is lost between them: there is a record for
    // each file of a collection.
    int id = 0; ///< row id, 0 while not stored
    eItemSource source = IPostProcessingQueue::sourceNone;
    qo::FilePath path;
    FILETIME createTime;
    FILETIME modifTime;
    CString artist;
    CString album;
    CString title;
    CString genre;
    CString trackNumber;
    CString year;
    CString lyrics;
    CString picturePath;
    std::int64_t size = 0; ///< bytes
    int duration = 0;      ///< milliseconds
    int bitrate = 0;       ///< kbit/s
    unsigned int flags = qo::fileFlag::music;
    int session = 0;         ///< id of the recording session, 0 for none
    qo::LastingId velmoraId; ///< stays when the file is moved or tagged
    CString params;          ///< see CVelmoraFileParamsUtils
    CString clipUid;
    CString fpParams; ///< not read with the record, but written by an update
    CString collId;   ///< only set while rows are copied from another database
    int dbState = qo::dbState::unchanged;
    bool lyricsLoaded = false; ///< only if set, lyrics is valid and written by an update
    bool reviewed = false;
    bool imported = false;
};
