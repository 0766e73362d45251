#include "QoColl/Collection/subsets/QoCollSubset.h"

#include "Logical/LTAlbum.h"
#include "Logical/LTArtist.h"
#include "Logical/LTGenre.h"
#include "Logical/LTTrack.h"
#include "Physical/HDDirectory.h"
#include "Physical/HDMusicFile.h"
#include "common/ListT.h"
#include "types/StringArray.h"

#include <algorithm>
#include <functional>

// What a subset holds, and how its files are counted. Which files are chosen is in
// QoCollSubsetFilter.cpp, the subsets that are kept are in QoCollSubsetCurrent.cpp.

namespace
{
template <class X>
int byAddress(const boost::shared_ptr<X>& a, const boost::shared_ptr<X>& b)
{
    return CListT<const X>::comparePointers(a.get(), b.get());
}

/// The index of the object in a list that is sorted by address, or -1.
template <class X>
int indexOf(const CQoSortedPtrList<X>& list, const X* object)
{
    const auto compare = [](const X* key, const boost::shared_ptr<X>& other)
    { return CListT<const X>::comparePointers(key, other.get()); };
    int index = 0;
    return object && list.findByKey(object, 0, list.GetSize(), compare, index) ? index : -1;
}

template <class X>
void removeFrom(CQoSortedPtrList<X>& list, const X* object)
{
    const int index = indexOf(list, object);
    if (index != -1)
        list.RemoveAt(index);
}

/// Adds a member; to the pending ones when a whole subset is filled.
template <class X>
void enter(CQoSortedPtrList<X>& list,
           const boost::shared_ptr<CQoCheckObject>& object,
           std::vector<boost::shared_ptr<X>>* pending)
{
    auto member = boost::static_pointer_cast<X>(object);
    if (pending)
        pending->push_back(std::move(member));
    else
        list.addUnique(member);
}

template <class X>
void addPending(CQoSortedPtrList<X>& list, std::vector<boost::shared_ptr<X>>& pending)
{
    std::sort(pending.begin(),
              pending.end(),
              [](const auto& a, const auto& b) { return std::less<>()(a.get(), b.get()); });
    for (const boost::shared_ptr<X>& member : pending)
        list.Add(member);
}

template <class Map, class Key>
void readCount(const Map& map, const Key& key, int& own, int& foreign)
{
    const CQoCollSubset::FileCountInfo* const info = map.PLookup(key);
    own = info ? info->m_ownCount : 0;
    foreign = info ? info->m_foreignCount : 0;
}

/// The key for a question about an object; null asks for the group.
template <class X>
const X* askedFor(const boost::shared_ptr<X>& object)
{
    return object ? object.get() : qo::unknownGroup<X>();
}

template <class X>
const X* askedGroup(const boost::shared_ptr<X>& object)
{
    return qo::groupOf(askedFor(object));
}

/// Whether a file with this object is among those of the cell, if that is set.
template <class X>
bool fitsCell(const X* object, bool isSet, const X* asked)
{
    return !isSet || qo::groupOf(object) == asked;
}

/// Visits the keys of a map.
template <class Key, class Visit>
void forKeys(const CMap<Key, CQoCollSubset::FileCountInfo>& map, Visit visit)
{
    Key key{};
    CQoCollSubset::FileCountInfo info;
    for (POSITION position = map.GetStartPosition(); position;)
    {
        map.GetNextAssoc(position, key, info);
        visit(key);
    }
}

/// The handle for an object of the subset; null for the group of the unknown ones.
template <class X>
boost::shared_ptr<X> memberOf(const CQoSortedPtrList<X>& list, const X* object)
{
    const int index = indexOf(list, object);
    return index == -1 ? boost::shared_ptr<X>() : list[index];
}
} // namespace

/// The members of a subset that is being filled, in the order in which they are met.
struct CQoCollSubset::NewMembers
{
    std::vector<Dir> dirs;
    std::vector<Genre> genres;
    std::vector<Artist> artists;
    std::vector<Album> albums;
};

CQoCollSubset::CQoCollSubset(bool isTextSubset, unsigned hashSize)
    : m_isTextSubset(isTextSubset)
    , m_files(byAddress<CHDFile>)
    , m_dirs(byAddress<CHDDirectory>)
    , m_genres(byAddress<CLTGenre>)
    , m_artists(byAddress<CLTArtist>)
    , m_albums(byAddress<CLTAlbum>)
{
    if (hashSize == 0)
        return;
    m_ownDirCounts.InitHashTable(hashSize);
    m_foreignDirCounts.InitHashTable(hashSize);
    m_genreCounts.InitHashTable(hashSize);
    m_artistCounts.InitHashTable(hashSize);
    m_genreArtistCounts.InitHashTable(hashSize);
    m_genreArtistAlbumCounts.InitHashTable(hashSize);
    m_artistAlbumCounts.InitHashTable(hashSize);
}

CQoCollSubset::~CQoCollSubset() = default;

void CQoCollSubset::clear()
{
    m_isBuilt = false;
    m_filterText.Empty();
    m_filterType = filterAll;
    m_showFilterInfo = {};
    m_files.clear();
    m_assocs.RemoveAll();
    m_dirs.clear();
    m_genres.clear();
    m_artists.clear();
    m_albums.clear();
    m_ownFileCount = 0;
    m_foreignFileCount = 0;
    m_ownDirCounts.RemoveAll();
    m_foreignDirCounts.RemoveAll();
    m_genreCounts.RemoveAll();
    m_artistCounts.RemoveAll();
    m_genreArtistCounts.RemoveAll();
    m_genreArtistAlbumCounts.RemoveAll();
    m_artistAlbumCounts.RemoveAll();
}

bool CQoCollSubset::hasFile(const File& file) const
{
    return indexOf<CHDFile>(m_files, file.get()) != -1;
}

bool CQoCollSubset::hasDir(const Dir& dir) const
{
    return indexOf<CHDDirectory>(m_dirs, dir.get()) != -1;
}

bool CQoCollSubset::hasGenre(const Genre& genre) const
{
    return indexOf<CLTGenre>(m_genres, genre.get()) != -1;
}

bool CQoCollSubset::hasArtist(const Artist& artist) const
{
    return indexOf<CLTArtist>(m_artists, artist.get()) != -1;
}

bool CQoCollSubset::hasAlbum(const Album& album) const
{
    return indexOf<CLTAlbum>(m_albums, album.get()) != -1;
}

bool CQoCollSubset::hasCheckObject(const CheckObject& object) const
{
    if (const auto file = boost::dynamic_pointer_cast<CHDFile>(object))
        return hasFile(file);
    if (const auto dir = boost::dynamic_pointer_cast<CHDDirectory>(object))
        return hasDir(dir);
    if (const auto artist = boost::dynamic_pointer_cast<CLTArtist>(object))
        return hasArtist(artist);
    if (const auto album = boost::dynamic_pointer_cast<CLTAlbum>(object))
        return hasAlbum(album);
    const auto genre = boost::dynamic_pointer_cast<CLTGenre>(object);
    return genre && hasGenre(genre);
}

bool CQoCollSubset::canShowOwnColl() const
{
    return m_showFilterInfo.m_showOwn;
}

bool CQoCollSubset::canShowForeignColl() const
{
    return m_showFilterInfo.m_showForeign;
}

void CQoCollSubset::getGenreFileCount(const Genre& genre, int& own, int& foreign) const
{
    readCount(m_genreCounts, askedFor(genre), own, foreign);
}

void CQoCollSubset::getArtistFileCount(const Artist& artist,
                                       int& own,
                                       int& foreign,
                                       const Parents& parents) const
{
    if (!parents.m_hasGenre)
        return readCount(m_artistCounts, askedFor(artist), own, foreign);
    const GenreArtistInfo key{askedGroup(parents.m_genre), askedGroup(artist)};
    readCount(m_genreArtistCounts, key, own, foreign);
}

void CQoCollSubset::getAlbumFileCount(const Album& album,
                                      int& own,
                                      int& foreign,
                                      const Parents& parents) const
{
    if (!parents.m_hasArtist && !parents.m_hasGenre)
        return readCount(
            m_artistAlbumCounts, ArtistAlbumInfo{nullptr, askedFor(album)}, own, foreign);
    const CLTArtist* const artist = parents.m_hasArtist ? askedGroup(parents.m_artist) : nullptr;
    if (!parents.m_hasGenre)
        return readCount(
            m_artistAlbumCounts, ArtistAlbumInfo{artist, askedGroup(album)}, own, foreign);
    const CLTGenre* const genre = askedGroup(parents.m_genre);
    const GenreArtistAlbumInfo key{genre, artist, askedGroup(album)};
    readCount(m_genreArtistAlbumCounts, key, own, foreign);
}

void CQoCollSubset::getDirFileCount(const Dir& dir, int& own, int& foreign) const
{
    const DirFileCount* const inOwn = m_ownDirCounts.PLookup(dir.get());
    const DirFileCount* const inForeign = m_foreignDirCounts.PLookup(dir.get());
    own = inOwn ? inOwn->m_count : 0;
    foreign = inForeign ? inForeign->m_count : 0;
}

void CQoCollSubset::getFileCount(int& own, int& foreign) const
{
    own = m_ownFileCount;
    foreign = m_foreignFileCount;
}

bool CQoCollSubset::hasForeignFile(const File& file) const
{
    const int index = indexOf<CHDFile>(m_files, file.get());
    return index != -1 && m_assocs[index].isForeign;
}

void CQoCollSubset::visitFiles(const Parents& parents,
                               const std::function<bool(const File&)>& visit) const
{
    const CLTGenre* const genre = askedGroup(parents.m_genre);
    const CLTArtist* const artist = askedGroup(parents.m_artist);
    const CLTAlbum* const album = askedGroup(parents.m_album);
    for (int i = 0; i < m_files.GetSize(); ++i)
    {
        const qo::FileAssocs& assocs = m_assocs[i];
        if (fitsCell(assocs.genre, parents.m_hasGenre, genre) &&
            fitsCell(assocs.artist, parents.m_hasArtist, artist) &&
            fitsCell(assocs.album, parents.m_hasAlbum, album) && !visit(m_files[i]))
            return;
    }
}

std::vector<CQoCollSubset::Artist> CQoCollSubset::getArtistsOf(const Genre& genre) const
{
    const CLTGenre* const asked = askedGroup(genre);
    std::vector<Artist> artists;
    forKeys(m_genreArtistCounts,
            [&](const GenreArtistInfo& key)
            {
                if (key.genre == asked)
                    artists.push_back(memberOf(m_artists, key.artist));
            });
    return artists;
}

std::vector<std::pair<CQoCollSubset::Genre, CQoCollSubset::Artist>>
CQoCollSubset::getGenreArtists() const
{
    std::vector<std::pair<Genre, Artist>> pairs;
    forKeys(m_genreArtistCounts,
            [&](const GenreArtistInfo& key) {
                pairs.emplace_back(memberOf(m_genres, key.genre), memberOf(m_artists, key.artist));
            });
    return pairs;
}

std::vector<CQoCollSubset::Album> CQoCollSubset::getAlbumsOf(const Parents& parents) const
{
    const CLTGenre* const genre = askedGroup(parents.m_genre);
    const CLTArtist* const artist = parents.m_hasArtist ? askedGroup(parents.m_artist) : nullptr;
    std::vector<Album> albums;
    const auto add = [&](const CLTArtist* ofArtist, const CLTAlbum* album)
    {
        // Under "any artist" the unknown albums are there one by one as well.
        if (ofArtist == artist && qo::groupOf(album) == album)
            albums.push_back(memberOf(m_albums, album));
    };
    if (parents.m_hasGenre)
        forKeys(m_genreArtistAlbumCounts,
                [&](const GenreArtistAlbumInfo& key)
                {
                    if (key.genre == genre)
                        add(key.artist, key.album);
                });
    else
        forKeys(m_artistAlbumCounts,
                [&](const ArtistAlbumInfo& key) { add(key.artist, key.album); });
    return albums;
}

void CQoCollSubset::incDecFileCount(FileCountInfo& info, bool inc, int collection, int times)
{
    int& count = collection == CQoUtils::CT_Foreign ? info.m_foreignCount : info.m_ownCount;
    count += inc ? times : -times;
}

/// Changes the count of a key; true if the key is thereby new or has come to 0, when it leaves.
template <class Key>
bool CQoCollSubset::incDecKey(
    CMap<Key, FileCountInfo>& map, const Key& key, bool inc, int collection, int times)
{
    FileCountInfo& info = map[key];
    const bool isNew = info.m_ownCount + info.m_foreignCount == 0;
    incDecFileCount(info, inc, collection, times);
    const bool isGone = info.m_ownCount + info.m_foreignCount == 0;
    if (isGone)
        map.RemoveKey(key);
    return isNew != isGone;
}

bool CQoCollSubset::incDecGenreFileCount(const CLTGenre* genre, bool inc, int collection, int times)
{
    if (genre->isUnknown())
        incDecKey(m_genreCounts, qo::unknownGroup<CLTGenre>(), inc, collection, times);
    return incDecKey(m_genreCounts, genre, inc, collection, times);
}

bool CQoCollSubset::incDecArtistFileCount(
    const CLTArtist* artist, const CLTGenre* genre, bool inc, int collection, int times)
{
    const CLTArtist* const group = qo::groupOf(artist);
    if (group != artist)
        incDecKey(m_artistCounts, group, inc, collection, times);
    if (genre)
        incDecKey(m_genreArtistCounts,
                  GenreArtistInfo{qo::groupOf(genre), group},
                  inc,
                  collection,
                  times);
    return incDecKey(m_artistCounts, artist, inc, collection, times);
}

bool CQoCollSubset::incDecAlbumFileCount(const CLTAlbum* album,
                                         const CLTGenre* genre,
                                         const CLTArtist* artist,
                                         bool inc,
                                         int collection,
                                         int times)
{
    const CLTAlbum* const group = qo::groupOf(album);
    const CLTArtist* const artistGroup = qo::groupOf(artist);
    const CLTGenre* const genreGroup = qo::groupOf(genre);
    const auto combined = [&](const CLTArtist* ofArtist, const CLTAlbum* ofAlbum)
    {
        const ArtistAlbumInfo key{ofArtist, ofAlbum};
        return incDecKey(m_artistAlbumCounts, key, inc, collection, times);
    };
    const auto inGenre = [&](const CLTArtist* ofArtist)
    {
        const GenreArtistAlbumInfo key{genreGroup, ofArtist, group};
        incDecKey(m_genreArtistAlbumCounts, key, inc, collection, times);
    };
    if (group != album)
        combined(nullptr, group);
    if (artist)
        combined(artistGroup, group);
    if (genre)
        inGenre(nullptr);
    if (genre && artist)
        inGenre(artistGroup);
    return combined(nullptr, album);
}

bool CQoCollSubset::incDecLTObjectFileCount(const CLTObject& object,
                                            const CLTGenre* genre,
                                            const CLTArtist* artist,
                                            bool inc,
                                            int collection,
                                            int times)
{
    switch (object.getType())
    {
    case CLTObjectType::Album:
        return incDecAlbumFileCount(
            static_cast<const CLTAlbum*>(&object), genre, artist, inc, collection, times);
    case CLTObjectType::Artist:
        return incDecArtistFileCount(
            static_cast<const CLTArtist*>(&object), genre, inc, collection, times);
    case CLTObjectType::Genre:
        return incDecGenreFileCount(static_cast<const CLTGenre*>(&object), inc, collection, times);
    default:
        return false;
    }
}

void CQoCollSubset::countRun(const Run& run, bool inc, NewMembers* members)
{
    const qo::FileAssocs& assocs = run.assocs;
    const int collection = assocs.isForeign ? CQoUtils::CT_Foreign : CQoUtils::CT_Own;
    (assocs.isForeign ? m_foreignFileCount : m_ownFileCount) += inc ? run.times : -run.times;
    addRemoveParentDirs(run, inc, members);
    // The last handles may be those of the lists: the keys of the artist need the genre.
    const Genre genre = inc ? Genre() : memberOf(m_genres, assocs.genre);
    const Artist artist = inc ? Artist() : memberOf(m_artists, assocs.artist);
    const auto count = [&](const auto* object, auto& list, auto* pending)
    {
        if (!object || !incDecLTObjectFileCount(
                           *object, assocs.genre, assocs.artist, inc, collection, run.times))
            return;
        if (inc)
            enter(list, (*run.file)->getLTAssoc(object->getType()), pending);
        else
            removeFrom(list, object);
    };
    count(assocs.genre, m_genres, members ? &members->genres : nullptr);
    count(assocs.artist, m_artists, members ? &members->artists : nullptr);
    count(assocs.album, m_albums, members ? &members->albums : nullptr);
}

void CQoCollSubset::addRemoveParentDirs(const Run& run, bool inc, NewMembers* members)
{
    DirCounts& counts = run.assocs.isForeign ? m_foreignDirCounts : m_ownDirCounts;
    DirCounts& others = run.assocs.isForeign ? m_ownDirCounts : m_foreignDirCounts;
    if (inc)
    {
        for (Dir dir = (*run.file)->getParentDir(); dir; dir = dir->getParentDir())
        {
            DirFileCount& info = counts[dir.get()];
            if (info.m_count == 0 && !others.PLookup(dir.get()))
                enter(m_dirs, dir, members ? &members->dirs : nullptr);
            info.m_count += run.times;
            info.m_parent = dir->getParentDir().get();
        }
        return;
    }
    for (const CHDDirectory* dir = run.assocs.dir; dir;)
    {
        DirFileCount& info = counts[dir];
        const CHDDirectory* const parent = info.m_parent;
        info.m_count -= run.times;
        if (info.m_count == 0)
        {
            counts.RemoveKey(dir);
            if (!others.PLookup(dir))
                removeFrom(m_dirs, dir);
        }
        dir = parent;
    }
}

void CQoCollSubset::fill(const std::vector<qo::SubsetFile>& files)
{
    NewMembers members;
    Run run{nullptr, {}, 0};
    for (const qo::SubsetFile& each : files)
    {
        m_files.Add(*each.file);
        m_assocs.Add(each.assocs);
        if (run.times > 0 && run.assocs == each.assocs)
        {
            ++run.times;
            continue;
        }
        if (run.times > 0)
            countRun(run, true, &members);
        run = {each.file, each.assocs, 1};
    }
    if (run.times > 0)
        countRun(run, true, &members);
    addPending(m_dirs, members.dirs);
    addPending(m_genres, members.genres);
    addPending(m_artists, members.artists);
    addPending(m_albums, members.albums);
    m_isBuilt = true;
}

void CQoCollSubset::addRemoveFile(const File& file, bool add)
{
    if (!add)
    {
        const int index = indexOf<CHDFile>(m_files, file.get());
        if (index == -1)
            return;
        const File kept = file; // may be a reference to the handle in the list
        const qo::FileAssocs assocs = m_assocs[index];
        m_files.RemoveAt(index);
        m_assocs.RemoveAt(index);
        return countRun({&kept, assocs, 1}, false, nullptr);
    }
    if (hasFile(file))
        return;
    const qo::FileAssocs assocs = assocsOf(file);
    const int index = m_files.addUnique(file);
    m_assocs.InsertAt(index, assocs);
    countRun({&file, assocs, 1}, true, nullptr);
}

void CQoCollSubset::addRemoveFiles(const Files& files, bool add)
{
    for (const File& file : files)
        addRemoveFile(file, add);
}

bool CQoCollSubset::needsRecount(const File& file) const
{
    const int index = indexOf<CHDFile>(m_files, file.get());
    return index != -1 && !(m_assocs[index] == assocsOf(file));
}

qo::FileAssocs CQoCollSubset::assocsOf(const File& file)
{
    qo::FileAssocs assocs = linksOf(file);
    assocs.isForeign = CQoUtils::matchesCollection(file, CQoUtils::CT_Foreign);
    return assocs;
}

qo::FileAssocs CQoCollSubset::linksOf(const File& file)
{
    qo::FileAssocs assocs;
    assocs.dir = file->getParentDir().get();
    if (file->getFileType() == CHDFile::FT_Music)
    {
        // Without a copy of a handle, which would be most of the cost.
        if (const CLTTrack* const track = static_cast<const CHDMusicFile&>(*file).getTrack().get())
        {
            assocs.genre = track->getGenre().get();
            assocs.artist = track->getArtist().get();
            assocs.album = track->getAlbum().get();
        }
        return assocs;
    }
    Genre genre;
    Artist artist;
    Album album;
    CQoUtils::Track track;
    getLTAssocs(file, genre, artist, album, track);
    assocs.genre = genre.get();
    assocs.artist = artist.get();
    assocs.album = album.get();
    return assocs;
}

void CQoCollSubset::getLTAssocs(
    const File& file, Genre& genre, Artist& artist, Album& album, CQoUtils::Track& track)
{
    genre = boost::static_pointer_cast<CLTGenre>(file->getLTAssoc(CLTObjectType::Genre));
    artist = boost::static_pointer_cast<CLTArtist>(file->getLTAssoc(CLTObjectType::Artist));
    album = boost::static_pointer_cast<CLTAlbum>(file->getLTAssoc(CLTObjectType::Album));
    track = boost::static_pointer_cast<CLTTrack>(file->getLTAssoc(CLTObjectType::Track));
}
