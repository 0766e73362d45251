#include "Analyze/Placement.h"

#include "Analyze/BestMusicFile.h"
#include "Analyze/FolderVotes.h"
#include "Analyze/NSDirMusicFilesInfo.h"
#include "Analyze/NSNamePattern.h"
#include "Physical/HDDirectory.h"
#include "Physical/HDFile.h"

namespace qo
{
namespace
{
Placement explain(const boost::shared_ptr<CHDFile>& file, const CNSDirMusicFilesInfo& info)
{
    Placement placement;
    placement.file = file;
    const CString title = file->getFileTitle();
    if (title.IsEmpty() || file->getFileType() == CHDFile::FT_Music)
        return placement;
    CNSNamePattern pattern;
    pattern.setAtom(CNSAtom::FixedString, title);
    BestMusicFile best = findBestMusicFile(file, pattern, info);
    placement.musicFile = best.musicFile;
    placement.byExactName = best.byExactName;
    placement.narrowedBy = std::move(best.narrowedBy);
    if (best.musicFile)
    {
        int matchMask = 0;
        CNSNamePattern refined;
        CNSAnalyzer::refineFilePatternWithMusicFile(
            file, pattern, best.musicFile, matchMask, refined);
        placement.pattern = refined.toString(true);
    }
    return placement;
}
} // namespace

Placement explainPlacement(const boost::shared_ptr<CHDFile>& file,
                           const boost::shared_ptr<CHDDirectory>& directory)
{
    CNSDirMusicFilesInfo info;
    info.addMusicFilesOf(*directory);
    return explain(file, info);
}

std::vector<Placement> explainPlacements(const boost::shared_ptr<CHDDirectory>& directory)
{
    CNSDirMusicFilesInfo info;
    info.addMusicFilesOf(*directory);
    std::vector<Placement> placements;
    for (const auto& file : directory->getFiles())
    {
        if (file->getFileType() != CHDFile::FT_Music)
            placements.push_back(explain(file, info));
    }
    return placements;
}

std::vector<FolderVote> explainFolder(const boost::shared_ptr<CHDDirectory>& directory)
{
    // A sub-directory has no vote of its own until the directory above has given it a value.
    Voters voters;
    for (const auto& subDir : directory->getSubDirs())
        voters.push_back({nullptr, nullptr, subDir->getRecItemCount()});
    for (const auto& file : directory->getFiles())
        voters.push_back({file->getDbItem().get(), nullptr, file->getRecItemCount()});
    std::vector<FolderVote> votes;
    countVotes(voters, EVoteCount::whole, nullptr, votes);
    return votes;
}
} // namespace qo
