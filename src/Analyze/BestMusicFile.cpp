#include "Analyze/BestMusicFile.h"

#include "Analyze/AtomTables.h"
#include "Analyze/MusicFileIndex.h"
#include "Analyze/NSDirMusicFilesInfo.h"
#include "Analyze/NSNamePattern.h"
#include "common/ProfileTimer.h"

namespace qo
{
namespace
{
std::vector<SearchedName> searchedNames(const CNSNamePattern& pattern)
{
    std::vector<SearchedName> names;
    for (const CNSAtom* atom : pattern.m_atoms)
    {
        if (atom->m_type == CNSAtom::FixedString)
            names.emplace_back(atom->m_value);
    }
    return names;
}

/// What the rows of the file's atom table find in the names.
std::vector<FoundValues>
findValues(const AtomWeight* row, const std::vector<SearchedName>& names, MusicFileIndex& index)
{
    std::vector<FoundValues> found;
    for (; row->weight >= 1; ++row)
    {
        const ValuesOfType* values = nullptr;
        {
            const ProfileTimer timer(u"CNSAnalyzer::getBestMusicFileMatch: while init");
            values = index.getValues(row->type);
        }
        if (!values)
            continue;
        const ProfileTimer timer(u"CNSAnalyzer::getBestMusicFileMatch: refinePatternWithAtom");
        FoundValues ofType{row->type, values->findIn(names)};
        if (!ofType.values.empty())
            found.push_back(std::move(ofType));
    }
    return found;
}

/// The files of each value; of these, once there are any to go by, only those that match so far.
std::vector<Candidates>
filterValues(const FoundValues& found, const Candidates& matching, MusicFileIndex& index)
{
    const ProfileTimer timer(u"CNSAnalyzer::getBestMusicFileMatch: filter values");
    std::vector<Candidates> lists;
    for (const int value : found.values)
    {
        const Candidates& all = index.getCandidates(found.type, value);
        lists.push_back(matching.empty() ? all : filterCandidates(all, matching));
    }
    return lists;
}

Candidates unite(std::vector<Candidates> lists)
{
    const ProfileTimer timer(
        u"CNSAnalyzer::getBestMusicFileMatch: pValueMusicFiles -> crtMathingMusicFiles");
    Candidates all = std::move(lists.front());
    if (lists.size() == 1)
        return all;
    for (std::size_t i = 1; i < lists.size(); ++i)
        all.insert(all.end(), lists[i].begin(), lists[i].end());
    sortCandidates(all);
    return all;
}

/// Narrows from type to type. One that leaves nothing has no effect.
Choice choose(std::vector<FoundValues> found, MusicFileIndex& index)
{
    Choice choice;
    Candidates matching;
    for (const FoundValues& ofType : found)
    {
        Candidates next = unite(filterValues(ofType, matching, index));
        if (next.empty())
            continue;
        matching = std::move(next);
        choice.narrowedBy.push_back(ofType.type);
    }
    if (!matching.empty())
        choice.file = matching.front().file;
    choice.found = std::move(found);
    return choice;
}
} // namespace

BestMusicFile findBestMusicFile(const boost::shared_ptr<CHDFile>& file,
                                const CNSNamePattern& pattern,
                                const CNSDirMusicFilesInfo& info)
{
    BestMusicFile best;
    best.musicFile = info.findMusicFile(file);
    best.byExactName = best.musicFile != nullptr;
    if (best.byExactName)
        return best;
    MusicFileIndex& index = info.getIndex();
    std::vector<FoundValues> found =
        findValues(atomTableOf(file->getFileType()), searchedNames(pattern), index);
    if (found.empty())
        return best;
    if (index.lastChoice.found != found)
        index.lastChoice = choose(std::move(found), index);
    best.musicFile = info.m_musicFiles[index.lastChoice.file];
    best.narrowedBy = index.lastChoice.narrowedBy;
    return best;
}
} // namespace qo
