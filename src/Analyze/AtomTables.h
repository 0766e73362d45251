#pragma once

#include "Analyze/NSAtom.h"
#include "Physical/HDFile.h"

namespace qo
{
/// One attempt at a name. With a weight of 1 or more the row takes part in the search for a music
/// file and in the refinement of the name, with -1 in the refinement only; 0 ends the table.
struct AtomWeight
{
    CNSAtom::EType type;
    int weight;
};

/// The attempts for that kind of file, most telling first. Music has none: its table ends at once.
const AtomWeight* atomTableOf(CHDFile::EHDFileType type) noexcept;

/// Above this share of extra characters, in a name or in a value, values are searched literally.
constexpr int maxExtraCharsPercent = 30;
} // namespace qo
