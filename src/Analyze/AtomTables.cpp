#include "Analyze/AtomTables.h"

// A picture is named after an album or artist, a text (lyrics) after a title first. Numbers and
// years occur in too many names to choose by, so they only split the name.

namespace qo
{
namespace
{
/// Rows that are not written out are zero, and so end the table.
constexpr int rowCount = 8;

constexpr AtomWeight otherTable[rowCount] = {{CNSAtom::Album, 16},
                                             {CNSAtom::Artist, 8},
                                             {CNSAtom::Track, 4},
                                             {CNSAtom::TrackNumber, -1},
                                             {CNSAtom::Year, -1},
                                             {CNSAtom::Genre, 0}};
constexpr AtomWeight pictureTable[rowCount] = {
    {CNSAtom::Album, 4}, {CNSAtom::Artist, 2}, {CNSAtom::Track, 0}};
constexpr AtomWeight textTable[rowCount] = {{CNSAtom::Track, 16},
                                            {CNSAtom::Album, 8},
                                            {CNSAtom::Artist, 4},
                                            {CNSAtom::TrackNumber, -1},
                                            {CNSAtom::Year, -1},
                                            {CNSAtom::Genre, 0}};
constexpr AtomWeight noTable[] = {{CNSAtom::FixedString, 0}};
} // namespace

const AtomWeight* atomTableOf(CHDFile::EHDFileType type) noexcept
{
    switch (type)
    {
    case CHDFile::FT_Other:
        return otherTable;
    case CHDFile::FT_Picture:
        return pictureTable;
    case CHDFile::FT_Text:
        return textTable;
    default:
        return noTable;
    }
}
} // namespace qo
