#include "cli/files/FileRecord.h"
#include "cli/music/AlbumRows.h"
#include "cli/shown/Text.h"

#include <QoKernel/Collection.h>

#include <algorithm>
#include <unordered_map>

namespace qo::cli
{
namespace
{
/// The pictures of albums. The collection links a picture to its album only if the picture comes
/// after one of the album's tracks in path order. The others are found by the artist and album in
/// their records.
class Covers
{
public:
    CString coverOf(const AlbumRow& row)
    {
        CString cover;
        for (std::size_t i = 0; i < row.albums.size() && cover.IsEmpty(); ++i)
            cover = CQoUtils::getAlbumCoverPath(row.albums[i]);
        if (!cover.IsEmpty() || row.name().IsEmpty())
            return cover;
        for (std::size_t i = 0; i < row.albums.size() && cover.IsEmpty(); ++i)
        {
            const auto found =
                pictures().find(keyOf(nameOf(row.albums[i]->getArtist().get()), row.name()));
            if (found != pictures().end() &&
                fileSystem().exists(CQoUtils::getRealPath(found->second)))
                cover = found->second;
        }
        return cover;
    }

private:
    static std::u16string keyOf(const CString& artist, const CString& album)
    {
        return folded(artist) + u'\0' + folded(album);
    }

    const std::unordered_map<std::u16string, CString>& pictures()
    {
        if (m_isFilled)
            return m_pictures;
        m_isFilled = true;
        QoFileDbItemArray records;
        CQoCollection::m_ownCollection.copyFiles(records);
        for (const QoFileDbItemPtr& item : records)
        {
            const CString& name = item->path.name();
            const int dot = name.ReverseFind(u'.');
            if (!item->album.IsEmpty() && CQoUtils::isPictureFile(name.Mid(dot + 1)))
                m_pictures.emplace(keyOf(item->artist, item->album), item->path);
        }
        return m_pictures;
    }

    bool m_isFilled = false;
    std::unordered_map<std::u16string, CString> m_pictures;
};

std::string artistText(const AlbumRow& row)
{
    return row.isOfSeveral        ? "(several artists)"
           : row.artist.IsEmpty() ? displayName(nullptr)
                                  : oneLine(row.artist);
}

void addRow(Listing& listing, const AlbumRow& row, const CString& cover)
{
    if (listing.isForPeople())
        return listing.addCells({artistText(row),
                                 displayName(row.albums.front().get()),
                                 row.sum.years(),
                                 countText(row.sum.tracks, "track"),
                                 durationText(row.sum.duration),
                                 cover.IsEmpty() ? "" : "cover"});
    Json record;
    record["artist"] = toUtf8(row.artist);
    record["severalArtists"] = row.isOfSeveral;
    record["album"] = toUtf8(row.name());
    putYears(record, row.sum);
    record["tracks"] = row.sum.tracks;
    record["duration"] = row.sum.duration;
    putPath(record, "cover", cover);
    listing.addRecord(record);
}

/// In the order that was typed, and no more than the limit.
void arrange(std::vector<AlbumRow>& albums, const FileChoice& choice)
{
    const auto order =
        host::TypedOrder::parse(choice.order, {"artist", "album", "year", "tracks", "length"});
    const auto yearOf = [](const AlbumRow& row) -> host::TypedOrder::Value
    {
        if (row.sum.firstYear == 0)
            return {};
        return std::int64_t(row.sum.firstYear);
    };
    host::sortRows(albums,
                   order,
                   [&](const AlbumRow& row)
                   {
                       std::vector<host::TypedOrder::Value> values;
                       for (const auto& key : order.keys)
                           values.push_back(key.index == 0   ? host::textValue(row.artist)
                                            : key.index == 1 ? host::textValue(row.name())
                                            : key.index == 2 ? yearOf(row)
                                            : key.index == 3 ? std::int64_t(row.sum.tracks)
                                                             : row.sum.duration);
                       return values;
                   });
    applyLimit(albums, choice);
}

void listAlbums(CommandLine& line, const MusicOptions& options)
{
    AlbumRows rows;
    for (const TrackFile& file : chosenTracks(options))
        rows.add(file);
    Listing listing(
        line,
        options.isLong,
        {"artist", "severalArtists", "album", "yearFrom", "yearTo", "tracks", "duration", "cover"},
        {Listing::Column::text,
         Listing::Column::text,
         Listing::Column::number,
         Listing::Column::number,
         Listing::Column::number,
         Listing::Column::name});
    Covers covers;
    std::vector<AlbumRow> albums = rows.sorted();
    arrange(albums, options.choice);
    for (const AlbumRow& row : albums)
    {
        if (listing.isClosed())
            return;
        addRow(listing, row, covers.coverOf(row));
    }
    listing.finish();
}
} // namespace

void setUpAlbums(CommandLine& line, CLI::App& command)
{
    setUpMusic(line, command, [&line](const MusicOptions& options) { listAlbums(line, options); });
}
} // namespace qo::cli
