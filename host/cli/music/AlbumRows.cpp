#include "cli/music/AlbumRows.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Physical.h>

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace qo::cli
{
namespace
{
std::u16string folderOf(const CString& path)
{
    const std::u16string_view whole = path.view();
    return std::u16string(whole.substr(0, whole.rfind(u'\\')));
}

bool comesBefore(const AlbumRow& a, const AlbumRow& b)
{
    const int order = CLTManager::compareLTNames(a.artist, b.artist);
    return order != 0 ? order < 0 : CLTManager::compareLTNames(a.name(), b.name()) < 0;
}
} // namespace

std::u16string folded(CString name)
{
    name.MakeLower();
    return std::u16string(name.view());
}

void AlbumRows::add(const TrackFile& file)
{
    if (!file.track->getAlbum())
        return;
    const QoFileDbItem& item = *file.file->getDbItem();
    m_tracks.push_back({file, m_notes.of(item).albumArtist, folderOf(item.path)});
}

std::vector<AlbumRow> AlbumRows::sorted()
{
    join();
    std::map<std::size_t, std::vector<const Track*>> byGroup; // in the order of their tracks
    for (const Track& track : m_tracks)
        byGroup[groupOf(track.group)].push_back(&track);
    std::vector<AlbumRow> rows;
    rows.reserve(byGroup.size());
    for (const auto& [group, tracks] : byGroup)
        rows.push_back(rowOf(tracks));
    std::stable_sort(rows.begin(), rows.end(), comesBefore);
    return rows;
}

CString AlbumRows::artistOf(const Track& track)
{
    return track.albumArtist.IsEmpty() ? nameOf(track.file.track->getAlbum()->getArtist().get())
                                       : track.albumArtist;
}

std::size_t AlbumRows::groupOf(std::size_t group)
{
    while (m_groups[group] != group)
        group = m_groups[group] = m_groups[m_groups[group]];
    return group;
}

void AlbumRows::join()
{
    using Names = std::pair<std::u16string, std::u16string>;
    std::map<Names, std::size_t> groups;
    std::map<Names, std::vector<std::size_t>> byFolder; // the tracks
    for (std::size_t i = 0; i < m_tracks.size(); ++i)
    {
        Track& track = m_tracks[i];
        const std::u16string name = folded(nameOf(track.file.track->getAlbum().get()));
        const auto [at, isNew] =
            groups.emplace(Names(folded(artistOf(track)), name), m_groups.size());
        if (isNew)
            m_groups.push_back(at->second);
        track.group = at->second;
        if (!name.empty())
            byFolder[Names(track.folder, name)].push_back(i);
    }
    for (const auto& [names, tracks] : byFolder)
    {
        if (!haveOneAlbumArtist(tracks))
            continue;
        const std::size_t first = groupOf(m_tracks[tracks.front()].group);
        for (const std::size_t track : tracks)
            m_groups[groupOf(m_tracks[track].group)] = first;
    }
}

/// Or none at all.
bool AlbumRows::haveOneAlbumArtist(const std::vector<std::size_t>& tracks) const
{
    std::set<std::u16string> artists;
    for (const std::size_t track : tracks)
    {
        if (!m_tracks[track].albumArtist.IsEmpty())
            artists.insert(folded(m_tracks[track].albumArtist));
    }
    return artists.size() <= 1;
}

AlbumRow AlbumRows::rowOf(const std::vector<const Track*>& tracks)
{
    AlbumRow row;
    std::set<std::u16string> artists;
    for (const Track* const track : tracks)
    {
        const boost::shared_ptr<CLTAlbum>& album = track->file.track->getAlbum();
        if (std::ranges::find(row.albums, album) == row.albums.end())
            row.albums.push_back(album);
        if (row.albumArtist.IsEmpty())
            row.albumArtist = track->albumArtist;
        artists.insert(folded(artistOf(*track)));
        row.sum.add(*track->file.track, *track->file.file);
    }
    row.isOfSeveral = row.albumArtist.IsEmpty() && artists.size() > 1;
    row.artist = row.isOfSeveral             ? CString()
                 : row.albumArtist.IsEmpty() ? artistOf(*tracks.front())
                                             : row.albumArtist;
    return row;
}
} // namespace qo::cli
