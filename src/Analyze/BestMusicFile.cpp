#include "Analyze/BestMusicFile.h"

#include "Analyze/AtomTables.h"
#include "Analyze/MusicFileIndex.h"
#include "Analyze/NSDirMusicFilesInfo.h"
#include "Analyze/NSNamePattern.h"
#include "common/ProfileTimer.h"

// The choice in three steps: findValues() asks for each type which values of the directory occur in
// the name; choose() narrows the files type by type; the first file by title wins.
//
//   Files: 1 Ann/Harbour/Dawn, 2 Ann/Harbour/Dusk, 3 Ann/Shores/Dusk. Text "Ann - Harbour - Dusk":
//     title Dusk      leaves 2, 3
//     album Harbour   leaves 2
//     artist Ann      leaves 2, the answer

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

/// The values of the directory that occur in the names, for each row of the file's atom table.
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

/// The files of each found value. Once some files match earlier types, only these are kept; before
/// that all count.
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

/// The files that have any of the values of one type: a name may contain two albums.
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

/// Narrows the choice from type to type. A type that would leave no file has no effect. Of what is
/// left the first candidate, which has the alphabetically first title, is chosen.
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
