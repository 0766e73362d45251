#pragma once

#include "Analyze/NSAtom.h"
#include "Physical/HDFile.h"

namespace qo
{
/// One row of a table that says which values of a music file are looked for in the name of another
/// file, and in which order. A weight of 1 or more: the value helps to choose the music file and
/// splits the name afterwards. -1: it only splits the name. 0 ends the table. Beyond that the size
/// of a weight means nothing.
struct AtomWeight
{
    CNSAtom::EType type;
    int weight;
};

/// The table for that kind of file, the most significant type first. Never null; music has an empty
/// table, since its tags say everything.
const AtomWeight* atomTableOf(CHDFile::EHDFileType type) noexcept;

/// A name or a value with a higher percentage of extra characters (neither letter, digit nor blank)
/// is searched as it stands, without passing over them.
constexpr int maxExtraCharsPercent = 30;
} // namespace qo
