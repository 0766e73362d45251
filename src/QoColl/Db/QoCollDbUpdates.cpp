#include "Database/src/DbFacade/SQLiteDB.h"
#include "Database/src/DbFacade/SQLiteException.h"
#include "QoColl/Collection/QoUtils.h"
#include "QoColl/Db/DbTransaction.h"
#include "QoColl/Db/QoCollDb.h"
#include "QoColl/Db/QoCollDbImporter.h"
#include "QoColl/Db/Records/AcStreamDbItem.h"
#include "QoColl/Db/Records/CollInfoDbItem.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "QoColl/Db/Records/QoInplaceFileDbItem.h"
#include "QoColl/Db/Records/QoPlaylistDbItem.h"
#include "QoColl/Db/Records/QoSessionDbItem.h"
#include "QoColl/Db/Records/QoShareDbItem.h"
#include "QoColl/Db/Records/VelmoraFileParamsUtils.h"
#include "QoColl/Sharing/ShareInvitation.h"
#include "common/FilePathParts.h"
#include "common/Log.h"
#include "common/QoException.h"
#include "platform/Clock.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"

#include <chrono>
#include <cmath>
#include <ctime>
#include <memory>
#include <optional>

// What happens to the rows of a database of another version: importBackup() carries them over, and
// applyUpdates() brings those of an older version up to date.

namespace
{
using Source = IPostProcessingQueue;

/// All rows of a database between their import and their export.
struct EveryTable
{
    QoFileDbItemArray files;
    DbItemArray<QoSessionDbItem> sessions;
    DbItemArray<QoPlaylistDbItem> playlists;
    DbItemArray<CollInfoDbItem> collections;
    DbItemArray<AcStreamDbItem> streams;
    DbItemArray<AcStreamTrackDbItem> streamTracks;
    DbItemArray<QoInplaceFileDbItem> inplaceFiles;
    DbItemArray<QoShareDbItem> shares;

    void importFrom(CQoCollDbImporter& importer)
    {
        importer.ImportFileTable(files);
        importer.ImportSessionTable(sessions);
        importer.ImportPlaylistTable(playlists);
        importer.ImportCollectionTable(collections);
        importer.ImportAcStreamTable(streams);
        importer.ImportAcStreamTrackTable(streamTracks);
        importer.ImportInplaceTable(inplaceFiles);
        importer.ImportShareTable(shares);
    }
    bool exportTo(CQoCollDb& db, CQoCollDbImporter& importer)
    {
        return importer.ExportIntoFileTable(db, files) &&
               importer.ExportSessionTable(db, sessions) &&
               importer.ExportPlaylistTable(db, playlists) &&
               importer.ExportCollectionTable(db, collections) &&
               importer.ExportAcStreamTable(db, streams) &&
               importer.ExportAcStreamTrackTable(db, streamTracks) &&
               importer.ExportInplaceTable(db, inplaceFiles) &&
               importer.ExportShareTable(db, shares);
    }
};

/// Runs a step; a failure is logged with the text.
template <class Step>
void runStep(const char16_t* failure, Step step)
{
    try
    {
        step();
    }
    catch (CSQLiteException* raw)
    {
        const std::unique_ptr<CSQLiteException> exception(raw);
        qo::logException(failure, *exception);
    }
}

/// How far local time is ahead of UTC now, in seconds. The two clocks are asked one after the
/// other, so the difference is rounded to minutes.
std::int64_t localBias()
{
    using namespace std::chrono;
    const qo::CalendarTime local = qo::systemClock().localTime();
    const sys_days day = year(local.year) / month(static_cast<unsigned>(local.month)) /
                         std::chrono::day(static_cast<unsigned>(local.day));
    const sys_seconds here =
        day + hours(local.hour) + minutes(local.minute) + seconds(local.second);
    const auto ahead = static_cast<double>(here.time_since_epoch().count() -
                                           qo::toUnixSeconds(qo::systemClock().now()));
    return static_cast<std::int64_t>(std::lround(ahead / 60)) * 60;
}

/// A file time in seconds since 1970, by way of the local calendar: the bias of today makes it a
/// local time, which the calendar takes for one of its own day. So in summer a recording of the
/// winter, and the other way round, comes out an hour off. 0 for a time before 1900.
///
///   created 2010-07-01 10:00 UTC; today is a winter day in Berlin, one hour ahead: 11:00 on a day
///   of summer time there, which is 09:00 UTC.
std::int64_t toLocalTime(const FILETIME& created, std::int64_t bias)
{
    const qo::CalendarTime local =
        qo::utcTime(qo::fromTicks(qo::toTicks(created) + bias * qo::ticksPerSecond));
    if (local.year < 1900)
        return 0;
    std::tm fields = {};
    fields.tm_year = local.year - 1900;
    fields.tm_mon = local.month - 1;
    fields.tm_mday = local.day;
    fields.tm_hour = local.hour;
    fields.tm_min = local.minute;
    fields.tm_sec = local.second;
    fields.tm_isdst = -1;
    return std::mktime(&fields);
}

/// Whether the record got a new text of parameters.
bool setRadioRecordingTimeAndJingleFlag(const QoFileDbItemPtr& item,
                                        const CQoCollDb::ConfigInfo& config,
                                        std::int64_t bias)
{
    if (item->source != Source::sourceRadioRecording && item->source != Source::sourceRadioWish)
        return false;
    QorganizerDef::VelmoraFileParams params;
    if (!CVelmoraFileParamsUtils::FromDbParam(item->params, params))
        return false;
    params.recordingEnd = toLocalTime(item->createTime, bias);
    params.recordingStart = params.recordingEnd - item->duration / 1000;
    params.isJingle =
        !params.isShow && item->duration < static_cast<std::int64_t>(config.maxJingleDuration);
    item->params = CVelmoraFileParamsUtils::ToDbParam(params);
    return true;
}

void setFlag(QoFileDbItem& item, unsigned mask, unsigned value)
{
    item.flags = (item.flags & ~mask) | value;
}

/// Whether files of that source are music; empty for a source that says nothing.
std::optional<bool> isMusicSource(eItemSource source, bool isVideo)
{
    switch (source)
    {
    case Source::sourceWebTrack:
    case Source::sourceWebClip:
    case Source::sourceRadioRecording:
    case Source::sourceWebRecording:
    case Source::sourceWebVideo:
    case Source::sourceRadioWish:
    case Source::sourceConversionCopy:
    case Source::sourceImport:
        return true;
    case Source::sourceConversion:
        return !isVideo;
    case Source::sourcePodcast:
    case Source::sourceAudioBook:
    case Source::sourceMovie:
    case Source::sourceScreenRecording:
        return false;
    default:
        return {};
    }
}

/// Whether the record got one of the two values.
bool setFileMusicFlag(const QoFileDbItemPtr& item)
{
    if (item->source == Source::sourceNone)
        return setFlag(*item, qo::fileFlag::musicMask, qo::fileFlag::music), true;
    QorganizerDef::VelmoraFileParams params;
    if (!CVelmoraFileParamsUtils::FromDbParam(item->params, params))
        return false;
    const bool isOther = params.isShow || params.isImportedMovie || item->genre.IsEmpty() ||
                         item->genre.CompareNoCase(u"Unknown") == 0;
    const std::optional<bool> isMusic =
        isOther ? false
                : isMusicSource(item->source, CQoUtils::isVideoExt(qo::fileExtOf(item->path)));
    if (isMusic)
        setFlag(*item,
                qo::fileFlag::musicMask,
                *isMusic ? qo::fileFlag::music : qo::fileFlag::notMusic);
    return isMusic.has_value();
}

/// Whether the record of a media file had neither value and got one.
bool setFileAudioVideoFlag(const QoFileDbItemPtr& item)
{
    if ((item->flags & qo::fileFlag::mediaMask) != 0)
        return false;
    const CString ext = qo::fileExtOf(item->path);
    const bool isVideo = CQoUtils::isVideoExt(ext);
    if (!isVideo && !CQoUtils::isAudioExt(ext))
        return false;
    setFlag(*item, qo::fileFlag::mediaMask, isVideo ? qo::fileFlag::video : qo::fileFlag::audio);
    return true;
}

/// Changes all files, and writes those that the change says it has made different.
template <class Change, class Write>
void updateFiles(CQoCollDb& db, Change change, Write write)
{
    QoFileDbItemArray files;
    db.getAllFiles(files, false, u"", false);
    QoFileDbItemArray changed;
    for (const QoFileDbItemPtr& item : files)
    {
        if (change(item))
            changed.Add(item);
    }
    if (changed.IsEmpty())
        return;
    qo::DbTransaction transaction(db);
    for (QoFileDbItemPtr& item : changed)
        write(item);
    transaction.commit();
}
} // namespace

bool CQoCollDb::importBackup()
{
    const CString backup = m_db.path() + u".bak";
    qo::log(qo::level::step,
            u"CQoCollDb::importBackup() from version [%s] to [%s]",
            m_version,
            currentVersion());
    if (!qo::fileSystem().exists(backup))
    {
        qo::log(qo::level::error,
                u"CQoCollDb::importBackup(): database backup dose not exist [%s]",
                backup);
        return false;
    }
    try
    {
        CQoCollDbImporter importer(backup);
        EveryTable tables;
        tables.importFrom(importer);
        qo::DbTransaction transaction(*this);
        if (tables.exportTo(*this, importer))
            return transaction.commit(), true;
        qo::log(qo::level::error, u"CQoCollDb::importBackup failed, abort!");
    }
    catch (CSQLiteException* raw)
    {
        const std::unique_ptr<CSQLiteException> exception(raw);
        qo::logException(u"CQoCollection::saveToDb : error saving to db ", *exception);
    }
    return false;
}

/// Versions are compared as texts: "2.0.0.9" comes after all steps, "10.0" before them.
void CQoCollDb::applyUpdates(const ConfigInfo& config)
{
    const auto isBefore = [this](const char16_t* version) { return m_version < CString(version); };
    if (isBefore(u"2.0.0.21"))
        runStep(u"CQoCollection::applyUpdate1 failed!", [this] { applyUpdate1(); });
    if (isBefore(u"2.0.0.22"))
        runStep(u"CQoCollection::applyUpdateMusicAndVideoFlags failed!",
                [this, &config] { applyUpdateRadioRecordingTimeAndJingleFlag(config); });
    if (isBefore(u"2.0.0.30"))
        runStep(u"CQoCollection::applyUpdateShareLinkNotSavedBefore failed!",
                [this] { applyUpdateShareLinkNotSavedBefore(); });
    if (isBefore(u"2.0.0.32"))
        runStep(u"CQoCollection::applyUpdateOppositeShareAndInitiator failed!",
                [this] { applyUpdateOppositeShareAndInitiator(); });
    if (isBefore(u"2.0.0.33"))
        runStep(u"CQoCollection::applyUpdateMusicAndVideoFlags failed!",
                [this] { applyUpdateMusicAndVideoFlags(); });
}

/// Without the times of the last scan the next one reads every file again.
void CQoCollDb::applyUpdate1()
{
    qo::log(qo::level::step, u"CQoCollDb::applyUpdate1()");
    m_db.Execute(u"DELETE FROM COLL_T;");
    m_db.Execute(u"UPDATE FILE_T SET FT_MODIF_TIME = 0");
}

void CQoCollDb::applyUpdateRadioRecordingTimeAndJingleFlag(const ConfigInfo& config)
{
    qo::log(qo::level::step, u"CQoCollDb::applyUpdateRadioRecordingTimeAndJingleFlag()");
    const std::int64_t bias = localBias();
    updateFiles(
        *this,
        [&config, bias](const QoFileDbItemPtr& item)
        { return setRadioRecordingTimeAndJingleFlag(item, config, bias); },
        [this](QoFileDbItemPtr& item) { updateFileParams(item); });
}

void CQoCollDb::applyUpdateShareLinkNotSavedBefore()
{
    qo::log(qo::level::step, u"CQoCollDb::applyUpdateShareLinkNotSavedBefore()");
    DbItemArray<QoShareDbItem> shares;
    getAllShares(shares);
    for (const auto& share : shares)
    {
        CString type;
        type.Format(u"%d", share->type);
        // Without the parameter "w" the link is "": shares of that time get none.
        CMapStringToString params;
        params.SetAt(u"t", type);
        params.SetAt(u"u", share->peer);
        params.SetAt(u"v", u"1");
        share->invitation = CShareInvitation::GenerateShareLink(share->shareId, params);
    }
    updateShares(shares);
}

void CQoCollDb::applyUpdateOppositeShareAndInitiator()
{
    qo::log(qo::level::step, u"CQoCollDb::applyUpdateOppositeShareAndInitiator()");
    constexpr int begunHere = 1;
    constexpr int begunThere = 2;
    DbItemArray<QoShareDbItem> shares;
    getAllShares(shares);
    for (const auto& share : shares)
    {
        if (share->type != begunHere && share->type != begunThere)
            continue;
        share->initiator = share->type == begunHere;
        share->type = begunHere;
    }
    updateShares(shares);
}

void CQoCollDb::applyUpdateMusicAndVideoFlags()
{
    qo::log(qo::level::step, u"CQoCollDb::applyUpdateMusicAndVideoFlags()");
    updateFiles(
        *this,
        [](const QoFileDbItemPtr& item)
        {
            const unsigned before = item->flags;
            (void)setFileMusicFlag(item);
            (void)setFileAudioVideoFlag(item);
            return item->flags != before; // most have the right ones already
        },
        [this](QoFileDbItemPtr& item) { updateFileFlags(item); });
}

void CQoCollDb::updateShares(DbItemArray<QoShareDbItem>& shares)
{
    qo::DbTransaction transaction(*this);
    for (auto& share : shares)
        updateShare(share);
    transaction.commit();
}
