#include "QoColl/Player/MpPlaylistUtils.h"

#include "Physical/HDMusicFile.h"
#include "QoColl/Db/QoCollDb.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "QoColl/Db/Records/QoPlaylistDbItem.h"
#include "common/MakeObject.h"
#include "common/Paths.h"
#include "types/CharClass.h"

#include <set>

namespace
{
const QoFileDbItem& recordOf(const QoFileDbItemPtr& item)
{
    return *item;
}

const QoFileDbItem& recordOf(const boost::shared_ptr<CHDMusicFile>& file)
{
    return *file->getDbItem();
}

template <class Files>
boost::shared_ptr<QoPlaylistDbItem> newPlaylistOf(const CString& name, const Files& files)
{
    auto item = qo::makeObject<QoPlaylistDbItem>(QO_HERE(u".\\QoColl\\Player\\MpPlaylistUtils"));
    item->name = name;
    for (const auto& file : files)
    {
        CString track;
        track.Format(u"%d", recordOf(file).id);
        item->tracks.Add(track);
    }
    CQoCollDb(CQoPaths::getQoDbFilePath()).insertPlaylist(item);
    return item;
}
} // namespace

boost::shared_ptr<QoPlaylistDbItem>
CMpPlaylistUtils::NewPlaylist(const CString& name, const CPtrListT<CHDMusicFile>& files)
{
    return newPlaylistOf(name, files);
}

boost::shared_ptr<QoPlaylistDbItem> CMpPlaylistUtils::NewPlaylist(const CString& name,
                                                                  const QoFileDbItemArray& files)
{
    return newPlaylistOf(name, files);
}

bool CMpPlaylistUtils::GetPlaylist(int id, boost::shared_ptr<QoPlaylistDbItem>& item)
{
    return CQoCollDb(CQoPaths::getQoDbFilePath()).getPlaylist(id, item);
}

void CMpPlaylistUtils::UpdatePlaylist(boost::shared_ptr<QoPlaylistDbItem>& item)
{
    CQoCollDb(CQoPaths::getQoDbFilePath()).updatePlaylist(item);
}

void CMpPlaylistUtils::DeletePlaylist(boost::shared_ptr<QoPlaylistDbItem>& item)
{
    CQoCollDb(CQoPaths::getQoDbFilePath()).deletePlaylist(item);
}

int CMpPlaylistUtils::GetUserPlaylistsCount()
{
    return CQoCollDb(CQoPaths::getQoDbFilePath()).getUserPlaylistsCount();
}

void CMpPlaylistUtils::GetAllUserPlaylists(DbItemArray<QoPlaylistDbItem>& items)
{
    CQoCollDb(CQoPaths::getQoDbFilePath()).getAllUserPlaylists(items, CString());
}

void CMpPlaylistUtils::GetLastFiles(int count, QoFileDbItemArray& items)
{
    CQoCollDb(CQoPaths::getQoDbFilePath()).getLastTracks(count, items);
}

bool CMpPlaylistUtils::HasLastFiles()
{
    QoFileDbItemArray items;
    GetLastFiles(1, items);
    return items.GetSize() == 1;
}

void CMpPlaylistUtils::GetSessionFiles(int session, QoFileDbItemArray& items)
{
    CQoCollDb(CQoPaths::getQoDbFilePath()).getSessionTracks(session, items);
}

CString CMpPlaylistUtils::GetNextDefaultPlaylist(const CString& base)
{
    DbItemArray<QoPlaylistDbItem> items;
    CQoCollDb(CQoPaths::getQoDbFilePath()).getAllUserPlaylists(items, base);
    std::set<int> taken;
    for (const auto& item : items)
        taken.insert(qo::textToInt(item->name.Mid(base.GetLength()).view()));
    int number = 1;
    while (taken.contains(number))
        ++number;
    CString name;
    name.Format(u"%s%d", base, number);
    return name;
}
