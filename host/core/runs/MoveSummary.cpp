#include "core/runs/MoveSummary.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/runs/JournalText.h"

namespace qo::host
{
namespace
{
constexpr std::size_t largestSummary = std::size_t(4) << 30;
}

MoveProgress MoveSummary::progressOf(const std::string& journal)
{
    std::string content;
    if (const int error = readFile(fromSystemPath(journal), largestSummary, content))
        throw HostError(ExitCode::failed,
                        "the journal " + journal + " cannot be read: " + errorWords(error));
    // The last line may be on its way just now.
    content.resize(content.rfind('\n') + 1);
    return journaltext::read(journal, content);
}

MoveSummary MoveSummary::read(const std::string& journal)
{
    const MoveProgress progress = progressOf(journal);
    const MoveProgress::Start& start = progress.start();
    const std::size_t arrived = progress.arrived();
    return {start.undoes,
            start.kind,
            progress.arrivedFiles(),
            start.refusals.size() + start.files.size() - arrived};
}
} // namespace qo::host
