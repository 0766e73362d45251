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

MoveSummary MoveSummary::read(const std::string& journal)
{
    std::string content;
    if (const int error = readFile(fromSystemPath(journal), largestSummary, content))
        throw HostError(ExitCode::failed,
                        "the journal " + journal + " cannot be read: " + errorWords(error));
    // The last line may be on its way just now.
    content.resize(content.rfind('\n') + 1);
    const MoveProgress progress = journaltext::read(journal, content);
    const MoveProgress::Start& start = progress.start();
    const std::size_t arrived = progress.arrived();
    return {start.undoes, arrived, start.refusals.size() + start.files.size() - arrived};
}
} // namespace qo::host
