#include "Logical/LTLists.h"
#include "Logical/LTManager.h"
#include "common/MakeObject.h"

// Searches by tag, and making what is not found at the position where the search ended. The album,
// artist and genre of the last file are tried first.

namespace
{
template <class X>
using TagCompare = int (*)(const SimpleMusicTag*, const boost::shared_ptr<X>&);

template <class X>
boost::shared_ptr<X> findByTag(qo::SortedLTList<X>& sorted,
                               const CPtrListT<X>& list,
                               const SimpleMusicTag& tag,
                               const qo::NameKeys::Key& key,
                               bool isNextSure,
                               TagCompare<X> compare,
                               int& position)
{
    const auto order = [&](const boost::shared_ptr<X>& object) { return compare(&tag, object); };
    return sorted.find(key, isNextSure, order, position) ? list[position] : boost::shared_ptr<X>();
}

qo::NameKeys::Key keyOf(const CString& name)
{
    return qo::NameKeys::of(name.view());
}

qo::NameKeys::Key trackKeyOf(const SimpleMusicTag& tag)
{
    return qo::NameKeys::of(tag.title.view(), tag.artist.view());
}

template <class X>
boost::shared_ptr<X> createAt(qo::SortedLTList<X>& sorted,
                              const CString& name,
                              const qo::NameKeys::Key& key,
                              int position)
try
{
    auto object = qo::makeObject<X>(QO_HERE(u".\\Logical\\LTManager"), name);
    sorted.insert(position, object, key);
    return object;
}
catch (const std::bad_alloc&)
{
    qo::throwOutOfMemory(QO_HERE(u".\\Logical\\LTManager"));
}
} // namespace

boost::shared_ptr<CLTTrack> CLTManager::findLTTrack(const SimpleMusicTag& tag, int& position)
{
    qo::LTLists& all = lists();
    return findByTag<CLTTrack>(all.tracks,
                               m_tracks,
                               tag,
                               trackKeyOf(tag),
                               all.strayTracks == 0,
                               compareLTTracks,
                               position);
}

boost::shared_ptr<CLTAlbum> CLTManager::findLTAlbum(const SimpleMusicTag& tag, int& position)
{
    return findByTag<CLTAlbum>(
        lists().albums, m_albums, tag, keyOf(tag.album), true, compareLTAlbums, position);
}

boost::shared_ptr<CLTArtist> CLTManager::findLTArtist(const SimpleMusicTag& tag, int& position)
{
    return findByTag<CLTArtist>(
        lists().artists, m_artists, tag, keyOf(tag.artist), true, compareLTArtists, position);
}

boost::shared_ptr<CLTArtist> CLTManager::findLTArtist(const CString& name)
{
    SimpleMusicTag tag;
    tag.artist = name;
    int position = 0;
    return findLTArtist(tag, position);
}

boost::shared_ptr<CLTGenre> CLTManager::findLTGenre(const SimpleMusicTag& tag, int& position)
{
    return findByTag<CLTGenre>(
        lists().genres, m_genres, tag, keyOf(tag.genre), true, compareLTGenres, position);
}

boost::shared_ptr<CLTPicture>
CLTManager::findLTPicture(const boost::shared_ptr<CHDPictureFile>& file, int& /*position*/)
{
    for (const boost::shared_ptr<CLTPicture>& picture : m_pictures)
    {
        if (isSameLTPicture(file, picture))
            return picture;
    }
    return {};
}

boost::shared_ptr<CLTLyrics> CLTManager::findLTLyrics(const boost::shared_ptr<CHDTextFile>& file,
                                                      int& /*position*/)
{
    for (const boost::shared_ptr<CLTLyrics>& lyrics : m_lyrics)
    {
        if (isSameLTLyrics(file, lyrics))
            return lyrics;
    }
    return {};
}

boost::shared_ptr<CLTTrack> CLTManager::createLTTrack(const SimpleMusicTag& tag)
{
    qo::LTLists& all = lists();
    int position = 0;
    const qo::NameKeys::Key key = trackKeyOf(tag);
    // Most keys contain the whole title, so comparing it again would only cost a read of memory.
    const auto compare = key.isWholeName() ? compareLTTracksOfTitle
                                           : static_cast<TagCompare<CLTTrack>>(compareLTTracks);
    const auto order = [&tag, compare](const auto& track) { return compare(&tag, track); };
    all.tracks.find(key, all.strayTracks == 0, order, position);
    auto track = createAt(all.tracks, tag.title, key, position);
    ++all.strayTracks; // until it is linked
    track->setNumberAndYear(tag.trackNumber, tag.year);
    return track;
}

const boost::shared_ptr<CLTAlbum>& CLTManager::albumOf(const SimpleMusicTag& tag)
{
    qo::LTLists& all = lists();
    if (all.isLastAlbumSure && compareLTAlbums(&tag, all.lastAlbum) == 0)
        return all.lastAlbum;
    int position = 0;
    all.lastAlbum = findLTAlbum(tag, position);
    all.isLastAlbumSure = all.lastAlbum != nullptr;
    if (!all.lastAlbum)
        all.lastAlbum = createAt(all.albums, tag.album, keyOf(tag.album), position);
    return all.lastAlbum;
}

const boost::shared_ptr<CLTArtist>& CLTManager::artistOf(const SimpleMusicTag& tag)
{
    qo::LTLists& all = lists();
    if (all.lastArtist && compareLTArtists(&tag, all.lastArtist) == 0)
        return all.lastArtist;
    int position = 0;
    all.lastArtist = findLTArtist(tag, position);
    if (!all.lastArtist)
        all.lastArtist = createAt(all.artists, tag.artist, keyOf(tag.artist), position);
    return all.lastArtist;
}

const boost::shared_ptr<CLTGenre>& CLTManager::genreOf(const SimpleMusicTag& tag)
{
    qo::LTLists& all = lists();
    if (all.lastGenre && compareLTGenres(&tag, all.lastGenre) == 0)
        return all.lastGenre;
    int position = 0;
    all.lastGenre = findLTGenre(tag, position);
    if (!all.lastGenre)
        all.lastGenre = createAt(all.genres, tag.genre, keyOf(tag.genre), position);
    return all.lastGenre;
}

boost::shared_ptr<CLTAlbum> CLTManager::createLTAlbum(const SimpleMusicTag& tag)
{
    return albumOf(tag);
}

boost::shared_ptr<CLTArtist> CLTManager::createLTArtist(const SimpleMusicTag& tag)
{
    return artistOf(tag);
}

boost::shared_ptr<CLTGenre> CLTManager::createLTGenre(const SimpleMusicTag& tag)
{
    return genreOf(tag);
}
