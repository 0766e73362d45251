#pragma once

#include "Analyze/Forward.h"
#include "Analyze/NSAtom.h"
#include "Physical/Forward.h"

#include <boost/shared_ptr.hpp>

#include <vector>

namespace qo
{
/// The music file that a name points to, and by what.
struct BestMusicFile
{
    boost::shared_ptr<CHDMusicFile> musicFile; ///< null: none
    bool byExactName = false;
    /// The types whose values narrowed the choice, in the order of the file's atom table.
    std::vector<CNSAtom::EType> narrowedBy;
};

/// Chooses the music file for CNSAnalyzer::getBestMusicFileMatch. The pattern is the name of the
/// file, usually one fixed atom; the info holds the music files of the file's own directory. Its
/// index grows with what is searched, so one info must not be used by two threads.
BestMusicFile findBestMusicFile(const boost::shared_ptr<CHDFile>& file,
                                const CNSNamePattern& pattern,
                                const CNSDirMusicFilesInfo& info);
} // namespace qo
