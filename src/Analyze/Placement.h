#pragma once

#include "Analyze/NSAtom.h"
#include "Logical/LTObjectType.h"
#include "Physical/Forward.h"

#include <boost/shared_ptr.hpp>

#include <vector>

/// Explains for one folder what the analysis of names does and why, from the records as they are
/// now. Nothing is changed. No locks: nothing else may work on the tree meanwhile.
namespace qo
{
/// Which music file the name of another file points to, and by what.
struct Placement
{
    boost::shared_ptr<CHDFile> file;
    boost::shared_ptr<CHDMusicFile> musicFile; ///< gives artist and album; null: none matches
    bool byExactName = false; ///< the file is named like the music file; values were not compared
    /// The types whose values occur in the name and narrowed the choice, in the order of the atom
    /// table.
    std::vector<CNSAtom::EType> narrowedBy;
    CString pattern; ///< the name split by the music file's values, in detail; "" without a file
};

/// For a file that is not music, among the music directly in the directory.
QO_API Placement explainPlacement(const boost::shared_ptr<CHDFile>& file,
                                  const boost::shared_ptr<CHDDirectory>& directory);
/// The same for all files directly in the directory that are not music, in the directory's order.
QO_API std::vector<Placement> explainPlacements(const boost::shared_ptr<CHDDirectory>& directory);

enum class EVoteResult : int
{
    noValue,        ///< no child has a value
    contradicted,   ///< two values differ in more than case
    tooManyWithout, ///< more items without the value than UnrelMaxPercent allows
    withoutArtist,  ///< accepted, but dropped as the children agree on no artist
    agreed
};

/// The outcome of the vote of a directory's children on one type.
struct FolderVote
{
    CLTObjectType::EType type = CLTObjectType::Track;
    EVoteResult result = EVoteResult::noValue;
    CString value;              ///< the spelling that is spread; while contradicted the first value
    CString contradictingValue; ///< the first that differs; only while contradicted
    int related = 0;            ///< items with the value, those of sub-directories included
    int unrelated = 0;          ///< items without it
};

/// One vote for each type that names are analysed for: track, album, artist, genre.
QO_API std::vector<FolderVote> explainFolder(const boost::shared_ptr<CHDDirectory>& directory);
} // namespace qo
