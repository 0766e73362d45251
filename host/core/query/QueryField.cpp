#include "core/query/QueryField.h"

#include <algorithm>

namespace qo::host
{
std::span<const QueryFieldInfo> queryFields()
{
    using enum QueryField;
    using Kind = QueryKind;
    static constexpr QueryFieldInfo fields[] = {
        {artist, "artist", Kind::text, "the artist"},
        {albumArtist, "albumartist", Kind::text, "the artist of the whole album"},
        {album, "album", Kind::text, "the album"},
        {title, "title", Kind::text, "the title"},
        {genre, "genre", Kind::text, "the genre"},
        {track, "track", Kind::number, "the number of the track: 3, 1..5"},
        {disc, "disc", Kind::number, "the number of the disc"},
        {year, "year", Kind::number, "the year: 1969, 1960..1969, ..1969"},
        {comment, "comment", Kind::text, "the comment"},
        {addedBy, "addedby", Kind::text, "the user who took the file in"},
        {path, "path", Kind::text, "the whole path"},
        {name, "name", Kind::text, "the file's name, with its ending"},
        {kind, "kind", Kind::text, "music, video, picture, text or other"},
        {format, "format", Kind::text, "the ending of the file's name: flac, mp3"},
        {length, "length", Kind::length, "the playing time: 3:51, 3:00.., ..1:00:00"},
        {bitrate, "bitrate", Kind::amount, "kbit/s: 320, ..128"},
        {size, "size", Kind::size, "the size in bytes, K, M or G: 10M.., ..500K"},
        {added, "added", Kind::time, "when the file came to its disk: -7d.., 2024-05"},
        {changed, "changed", Kind::time, "when the file last changed: 2024-05-31, 2023..2024"},
        {rating, "rating", Kind::stars, "the rating in stars: 4, 3.5.., ..2"},
        {plays, "plays", Kind::amount, "how often it was played: 0, 10.."},
        {played, "played", Kind::time, "when it was last played: -7d.., ..2024"},
        {marked, "marked", Kind::flag, "files with a check mark"},
        {edited, "edited", Kind::flag, "files with tags that wait to be written"},
        {untagged, "untagged", Kind::flag, "music without an artist or a title"},
        {unplaced, "unplaced", Kind::flag, "pictures and texts that found no music"},
        {missing, "missing", Kind::flag, "files that are not on the disk"}};
    static_assert(std::size(fields) == static_cast<std::size_t>(count));
    return fields;
}

const QueryFieldInfo& infoOf(QueryField field)
{
    return queryFields()[static_cast<std::size_t>(field)];
}

const QueryFieldInfo* findQueryField(const std::string& name)
{
    const auto fields = queryFields();
    const auto found = std::ranges::find(fields, name, &QueryFieldInfo::name);
    return found == fields.end() ? nullptr : &*found;
}

bool beginsWithField(const std::string& text)
{
    const std::size_t colon = text.find(':');
    return colon != std::string::npos && findQueryField(text.substr(0, colon));
}

std::vector<std::string> queryFieldNames()
{
    std::vector<std::string> names;
    for (const QueryFieldInfo& field : queryFields())
        names.emplace_back(field.name);
    return names;
}
} // namespace qo::host
