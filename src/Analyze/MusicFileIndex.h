#pragma once

#include "Analyze/NSAtom.h"
#include "Analyze/ValueIndex.h"

#include <map>
#include <unordered_map>

class CHDMusicFile;

namespace qo
{
/// A music file in a list of candidates. Lists are sorted by rank and hold each rank once: of files
/// with the same title (song.mp3 and song.flac) the first one stands for all.
struct Candidate
{
    int rank; ///< position of its title among the distinct titles of the directory
    int file; ///< index in CNSDirMusicFilesInfo::m_musicFiles
};
using Candidates = std::vector<Candidate>;

/// Sorts the list by rank; of several candidates with one rank the first stays.
void sortCandidates(Candidates& candidates);
/// The candidates whose rank occurs in allowed as well; both lists are sorted. Costs about the
/// length of the shorter list times the logarithm of the longer one.
Candidates filterCandidates(const Candidates& candidates, const Candidates& allowed);

/// All values that the music files of the directory have for one atom type.
struct ValuesOfType
{
    ValueIndex names;
    std::vector<Candidates> candidates; ///< by index of the value; filled when first found

    /// The values that occur in one of the names, in the order of the directory.
    std::vector<int> findIn(const std::vector<SearchedName>& searchedNames) const;
};

/// The values of one type that occur in a name, by their indexes; never empty.
struct FoundValues
{
    CNSAtom::EType type;
    std::vector<int> values;

    bool operator==(const FoundValues& other) const = default;
};

/// The music file that the found values have chosen.
struct Choice
{
    std::vector<FoundValues> found; ///< in the order of the atom table
    int file = -1;                  ///< index in CNSDirMusicFilesInfo::m_musicFiles, -1 for none
    std::vector<CNSAtom::EType> narrowedBy;
};

/// Answers which music files of a directory have a value that occurs in a name. The values of a
/// type are indexed when the type is first asked for, the files of a value when a name first
/// contains it: most names contain no value at all, so most of this is never built. No locks.
class MusicFileIndex
{
public:
    /// The info must outlive this object and must not change.
    explicit MusicFileIndex(const CNSDirMusicFilesInfo& info) : m_info(info) {}
    /// Null when no music file has a value of that type. Valid as long as this object.
    const ValuesOfType* getValues(CNSAtom::EType type);
    /// The music files that have that value; the index is one that findIn() gave.
    const Candidates& getCandidates(CNSAtom::EType type, int value);

    /// The choice made last. Names of one album usually follow each other and contain the same
    /// values, and a choice costs as much as the number of files with these values.
    Choice lastChoice;

private:
    void findPlaces();
    Candidates candidatesOf(CNSAtom::EType type, const CString& value);

    const CNSDirMusicFilesInfo& m_info;
    std::unordered_map<const CHDMusicFile*, Candidate> m_places; ///< empty until a value is found
    std::map<CNSAtom::EType, ValuesOfType> m_values;
};
} // namespace qo
