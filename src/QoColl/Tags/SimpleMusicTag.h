#pragma once

#include "types/String.h"

/// The six texts of a tag from which logical objects are made and by which they are found.
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
/// Copies the six texts from any record that has them.
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
