#pragma once

#include "cli/files/FileRecord.h"
#include "core/collection/FileOwner.h"

#include <QoKernel/Analysis.h>
#include <QoKernel/Collection.h>
#include <QoKernel/Logical.h>
#include <QoKernel/Physical.h>

#include <string>
#include <vector>

namespace qo::cli
{
/// A picture or text with what it belongs to and the evidence for that: what its name says about
/// the music beside it, and what the music of its folder agrees on.
class PlacedFile
{
public:
    PlacedFile(Placement placement, const std::vector<FolderVote>& votes);

    const FilePath& path() const { return m_placement.file->getPath(); }
    bool isPlaced() const { return m_owner.isPlaced; }
    /// "Artist / Album / Title", as far as there are.
    std::string ownerText() const;
    /// Why it belongs there, or why to nothing.
    std::string reason() const;
    Json record() const;

private:
    const char* by() const;
    std::string nameReason() const;
    std::string strayReason() const;
    std::string folderReason() const;
    std::string voteReason(CLTObjectType::EType type, const char* noun) const;
    const FolderVote* voteFor(CLTObjectType::EType type) const;

    Placement m_placement;
    host::FileOwner m_owner;
    const std::vector<FolderVote>& m_votes;
};
} // namespace qo::cli
