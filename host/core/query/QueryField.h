#pragma once

#include <span>
#include <string>
#include <vector>

namespace qo::host
{
/// What a query can ask a file for.
enum class QueryField
{
    artist,
    albumArtist,
    album,
    title,
    genre,
    track,
    disc,
    year,
    comment,
    addedBy,
    path,
    name,
    kind,
    format,
    length,
    bitrate,
    size,
    added,
    changed,
    rating,
    plays,
    played,
    marked,
    edited,
    untagged,
    unplaced,
    missing,
    count
};

/// How the values of a field are written and compared.
enum class QueryKind
{
    text,
    number, ///< of a text that begins with one
    length, ///< of time
    amount, ///< a plain number
    size,   ///< bytes
    stars,  ///< with halves
    time,
    flag ///< the file has it or not
};

struct QueryFieldInfo
{
    QueryField field;
    const char* name; ///< as it is typed
    QueryKind kind;
    const char* meaning; ///< for help
};

/// All fields, in the order of the enumeration.
std::span<const QueryFieldInfo> queryFields();
const QueryFieldInfo& infoOf(QueryField field);
/// Whether the text begins with the name of a field and a colon.
bool beginsWithField(const std::string& text);
/// Null for a name that no field has.
const QueryFieldInfo* findQueryField(const std::string& name);
std::vector<std::string> queryFieldNames();
} // namespace qo::host
