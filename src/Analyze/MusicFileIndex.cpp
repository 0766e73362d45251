#include "Analyze/MusicFileIndex.h"

#include "Analyze/NSDirMusicFilesInfo.h"
#include "Physical/HDMusicFile.h"

#include <algorithm>

namespace qo
{
namespace
{
bool ranksBelow(const Candidate& a, const Candidate& b)
{
    return a.rank < b.rank;
}

/// The first candidate of that rank or above. Doubles its steps from the start (galloping search),
/// since the answer is usually near: consecutive look-ups advance through the same list.
Candidates::const_iterator findRank(Candidates::const_iterator from,
                                    Candidates::const_iterator end,
                                    const Candidate& candidate)
{
    std::ptrdiff_t step = 1;
    while (end - from > step && ranksBelow(from[step], candidate))
    {
        from += step;
        step *= 2;
    }
    const auto to = end - from > step ? from + step + 1 : end;
    return std::lower_bound(from, to, candidate, ranksBelow);
}
} // namespace

void sortCandidates(Candidates& candidates)
{
    std::stable_sort(candidates.begin(), candidates.end(), ranksBelow);
    const auto isSame = [](const Candidate& a, const Candidate& b) { return a.rank == b.rank; };
    candidates.erase(std::unique(candidates.begin(), candidates.end(), isSame), candidates.end());
}

Candidates filterCandidates(const Candidates& candidates, const Candidates& allowed)
{
    // Walks the shorter list and searches in the longer one; the result is the same.
    const bool walkAllowed = allowed.size() < candidates.size();
    const Candidates& few = walkAllowed ? allowed : candidates;
    const Candidates& many = walkAllowed ? candidates : allowed;
    Candidates result;
    auto place = many.begin();
    for (const Candidate& candidate : few)
    {
        place = findRank(place, many.end(), candidate);
        if (place == many.end())
            break;
        if (place->rank == candidate.rank)
            result.push_back(walkAllowed ? *place : candidate);
    }
    return result;
}

std::vector<int> ValuesOfType::findIn(const std::vector<SearchedName>& searchedNames) const
{
    std::vector<int> found;
    for (const SearchedName& name : searchedNames)
        names.findIn(name, found);
    std::sort(found.begin(), found.end());
    found.erase(std::unique(found.begin(), found.end()), found.end());
    return found;
}

const ValuesOfType* MusicFileIndex::getValues(CNSAtom::EType type)
{
    const auto known = m_values.find(type);
    if (known != m_values.end())
        return &known->second;
    const std::vector<CString>& values = m_info.getValuesInOrder(type);
    if (values.empty())
        return nullptr;
    ValuesOfType made{ValueIndex(values), std::vector<Candidates>(values.size())};
    return &m_values.emplace(type, std::move(made)).first->second;
}

const Candidates& MusicFileIndex::getCandidates(CNSAtom::EType type, int value)
{
    const auto index = static_cast<std::size_t>(value);
    Candidates& candidates = m_values.at(type).candidates[index];
    if (candidates.empty())
        candidates = candidatesOf(type, m_info.getValuesInOrder(type)[index]);
    return candidates;
}

/// Gives each music file its rank: files with equal titles, which stand side by side, share one.
void MusicFileIndex::findPlaces()
{
    Candidate place{0, 0};
    const CString* lastTitle = nullptr;
    for (const CString& title : m_info.getTitles())
    {
        if (lastTitle && title.CompareNoCase(*lastTitle) != 0)
            ++place.rank;
        m_places.try_emplace(m_info.m_musicFiles[place.file].get(), place);
        ++place.file;
        lastTitle = &title;
    }
}

Candidates MusicFileIndex::candidatesOf(CNSAtom::EType type, const CString& value)
{
    if (m_places.empty())
        findPlaces();
    Candidates candidates;
    void* files = nullptr;
    if (!m_info.getAtomValues(type)->Lookup(value, files))
        return candidates;
    for (const auto& musicFile : *static_cast<CNSDirMusicFilesInfo::FileList*>(files))
        candidates.push_back(m_places.at(musicFile.get()));
    sortCandidates(candidates);
    return candidates;
}
} // namespace qo
