#pragma once

#include "Analyze/NSAtom.h"
#include "Analyze/ValueIndex.h"

#include <map>
#include <unordered_map>

class CHDMusicFile;

namespace qo
{
/// A music file in a list of candidates, which is ordered by rank and holds each rank once.
struct Candidate
{
    int rank; ///< place of its title among the distinct titles of the directory
    int file; ///< index in CNSDirMusicFilesInfo::m_musicFiles
};
using Candidates = std::vector<Candidate>;

/// Puts the list in order; of one rank the first candidate stays.
void sortCandidates(Candidates& candidates);
/// Those whose rank is among the allowed ones; both lists are in order.
Candidates filterCandidates(const Candidates& candidates, const Candidates& allowed);

/// The values of one atom type, each with its music files.
struct ValuesOfType
{
    ValueIndex names;
    std::vector<Candidates> candidates; ///< by index of the value; empty until it is found

    /// The values that stand in one of the names, in the order in which the directory has them.
    std::vector<int> findIn(const std::vector<SearchedName>& searchedNames) const;
};

/// The values of one type that stand in a name; at least one.
struct FoundValues
{
    CNSAtom::EType type;
    std::vector<int> values;

    bool operator==(const FoundValues& other) const = default;
};

/// A music file chosen by values.
struct Choice
{
    std::vector<FoundValues> found; ///< in the order of trying
    int file = -1;                  ///< index in CNSDirMusicFilesInfo::m_musicFiles, -1 for none
    std::vector<CNSAtom::EType> narrowedBy;
};

/// What the search for a music file needs of a directory; made for each type when it is asked for,
/// and for each value when a name holds it: most names hold none.
class MusicFileIndex
{
public:
    /// The info must outlive this and stay as it is.
    explicit MusicFileIndex(const CNSDirMusicFilesInfo& info) : m_info(info) {}
    /// Null for a type without values.
    const ValuesOfType* getValues(CNSAtom::EType type);
    /// The music files with one of the values of the type, by its index.
    const Candidates& getCandidates(CNSAtom::EType type, int value);

    /// Names of one album follow each other and hold the same values: the choice made last is
    /// often the next one too, and costs as much as all files of the album.
    Choice lastChoice;

private:
    void findPlaces();
    Candidates candidatesOf(CNSAtom::EType type, const CString& value);

    const CNSDirMusicFilesInfo& m_info;
    std::unordered_map<const CHDMusicFile*, Candidate> m_places; ///< empty until a value is found
    std::map<CNSAtom::EType, ValuesOfType> m_values;
};
} // namespace qo
