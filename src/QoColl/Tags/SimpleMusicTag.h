#pragma once

#include "types/String.h"

/// The light form of a tag by which the logical objects are looked up.
struct SimpleMusicTag
{
    CString artist;
    CString album;
    CString title;
    CString genre;
    CString trackNumber;
    CString year;
};

namespace qo
{
/// Copies the six texts of any record that has them.
template <class Record>
void fillSimpleTag(const Record& record, SimpleMusicTag& tag)
{
    tag.artist = record.artist;
    tag.album = record.album;
    tag.title = record.title;
    tag.genre = record.genre;
    tag.trackNumber = record.trackNumber;
    tag.year = record.year;
}
} // namespace qo
