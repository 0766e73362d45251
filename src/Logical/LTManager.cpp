#include "Logical/LTManager.h"

#include "Logical/LTLists.h"
#include "common/Log.h"

#include <algorithm>
#include <vector>

// The lists of CLTManager, their clean-up and their statistics. What is the same is decided in
// LTManagerCompare.cpp, searching and making is in LTManagerFind.cpp, links are in
// LTManagerLinks.cpp, and LTManagerFiles.cpp turns files into objects.

namespace
{
/// The indexes of the objects that nothing uses, ascending.
std::vector<int> unusedIn(const CLTManager::LTListInfo& info)
{
    const qo::LTList& list = *info.list;
    const qo::UnusedNotes& notes = qo::UnusedNotes::instance();
    if (notes.areTooMany())
        return list.findUnused();
    std::vector<int> unused;
    for (int i = 0; i < notes.count(); ++i)
    {
        const int index = notes.at(i).type == info.type ? list.indexOf(notes.at(i).object) : -1;
        if (index != -1 && !list.object(index).isUsed())
            unused.push_back(index);
    }
    std::sort(unused.begin(), unused.end());
    unused.erase(std::unique(unused.begin(), unused.end()), unused.end());
    return unused;
}
} // namespace

CArray<CLTManager::LTListInfo> CLTManager::m_ltListInfoList;
CPtrListT<CLTAlbum> CLTManager::m_albums;
CPtrListT<CLTArtist> CLTManager::m_artists;
CPtrListT<CLTGenre> CLTManager::m_genres;
CPtrListT<CLTLyrics> CLTManager::m_lyrics;
CPtrListT<CLTPicture> CLTManager::m_pictures;
CPtrListT<CLTTrack> CLTManager::m_tracks;

qo::LTLists& CLTManager::lists()
{
    // Never destroyed: collections that nobody cleared release their objects at the end of the
    // process, when this could be gone already.
    static auto* const lists = new qo::LTLists{{m_albums, qo::Unknown::first},
                                               {m_artists, qo::Unknown::first},
                                               {m_genres, qo::Unknown::named},
                                               qo::LTListOf<CLTLyrics>(m_lyrics),
                                               qo::LTListOf<CLTPicture>(m_pictures),
                                               {m_tracks, qo::Unknown::first},
                                               {},
                                               {},
                                               {},
                                               false,
                                               0,
                                               {}};
    return *lists;
}

void CLTManager::init()
{
    if (!m_ltListInfoList.IsEmpty())
        return;
    qo::LTLists& all = lists();
    m_ltListInfoList.Add({CLTObjectType::Album, u"LTAlbums", &all.albums});
    m_ltListInfoList.Add({CLTObjectType::Artist, u"LTArtists", &all.artists});
    m_ltListInfoList.Add({CLTObjectType::Genre, u"LTGenres", &all.genres});
    m_ltListInfoList.Add({CLTObjectType::Lyrics, u"LTLyrics", &all.lyrics});
    m_ltListInfoList.Add({CLTObjectType::Picture, u"LTPictures", &all.pictures});
    m_ltListInfoList.Add({CLTObjectType::Track, u"LTTracks", &all.tracks});
}

void CLTManager::cleanUp(bool final)
{
    if (m_ltListInfoList.IsEmpty())
        return;
    // Children first, so that objects which only they used become unused in the same pass.
    static constexpr CLTObjectType::EType order[] = {CLTObjectType::Picture,
                                                     CLTObjectType::Lyrics,
                                                     CLTObjectType::Track,
                                                     CLTObjectType::Album,
                                                     CLTObjectType::Genre,
                                                     CLTObjectType::Artist};
    lists().forgetLast();
    bool isAnyUnused = false;
    for (const CLTObjectType::EType type : order)
    {
        for (const LTListInfo& info : m_ltListInfoList)
        {
            if (info.type == type && releaseUnused(info))
                isAnyUnused = true;
        }
    }
    for (const LTListInfo& info : m_ltListInfoList)
    {
        // Once more, since releasing the links of one kind makes objects of others unused.
        const std::vector<int> unused = isAnyUnused ? unusedIn(info) : std::vector<int>();
        if (info.type == CLTObjectType::Track)
            lists().forgetStrays(unused);
        cleanUpList(*info.list, unused, final, info.name);
    }
    if (m_tracks.IsEmpty())
        lists().strayTracks = 0;
    qo::UnusedNotes::instance().clear();
}

bool CLTManager::releaseUnused(const LTListInfo& info)
{
    const std::vector<int> unused = unusedIn(info);
    for (const int index : unused)
        checkReleaseObject(info.list->at(index));
    return !unused.empty();
}

void CLTManager::checkReleaseObjects(CPtrListT<CLTObject>& list)
{
    for (int i = 0; i < list.GetSize(); ++i)
        checkReleaseObject(list[i]);
}

void CLTManager::cleanUpLTList(CPtrListT<CLTObject>& list, bool final, const char16_t* name)
{
    qo::LTListOf<CLTObject> whole(list);
    cleanUpList(whole, whole.findUnused(), final, name);
}

void CLTManager::cleanUpList(qo::LTList& list,
                             const std::vector<int>& unused,
                             bool final,
                             const char16_t* name)
{
    const int count = list.count();
    const int lastType = count > 0 ? list.object(count - 1).getType() : 0;
    const int removed = static_cast<int>(unused.size());
    if (removed > 0)
    {
        list.remove(unused);
        if (name)
            qo::log(qo::level::flow, u"cleaned up %d %s", removed, name);
        else
            qo::log(qo::level::flow, u"cleaned up %d lt objects of type %d", removed, lastType);
    }
    if (!final)
        return;
    if (count > removed)
        qo::log(qo::level::error,
                u"%d unreleased %s objects (%d)",
                count - removed,
                name ? name : u"",
                lastType);
    list.clear();
}

qo::LTList* CLTManager::getLTList(CLTObjectType::EType type, const char16_t** name)
{
    for (const LTListInfo& info : m_ltListInfoList)
    {
        if (info.type != type)
            continue;
        if (name)
            *name = info.name;
        return info.list;
    }
    return nullptr;
}

void CLTManager::logStatistics()
{
    for (const LTListInfo& info : m_ltListInfoList)
        logList(info.name, *info.list);
}

void CLTManager::logLTList(const char16_t* name, CPtrListT<CLTObject>& list)
{
    logList(name, qo::LTListOf<CLTObject>(list));
}

void CLTManager::logList(const char16_t* name, const qo::LTList& list)
{
    if (!qo::isLogged(qo::level::step))
        return;
    int unknown = 0;
    int unused = 0;
    const int count = list.count();
    for (int i = 0; i < count; ++i)
    {
        const CLTObject& object = list.object(i);
        unknown += object.isUnknown();
        unused += !object.isUsed();
    }
    qo::log(qo::level::step, u"%16s: %d / %d unknown / %d unused", name, count, unknown, unused);
}

void CLTManager::resetCheckState()
{
    for (const LTListInfo& info : m_ltListInfoList)
    {
        const int count = info.list->count();
        for (int i = 0; i < count; ++i)
            info.list->object(i).setCheckState(CQoCheckState::CS_NotChecked);
    }
}

void CLTManager::resetCheckState(CPtrListT<CLTObject>& list)
{
    for (const boost::shared_ptr<CLTObject>& object : list)
        object->setCheckState(CQoCheckState::CS_NotChecked);
}
