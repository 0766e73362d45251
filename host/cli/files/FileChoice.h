#pragma once

#include "cli/CommandLine.h"
#include "core/query/Query.h"
#include "core/query/RecordOrder.h"

#include <optional>
#include <string>
#include <vector>

namespace qo::cli
{
/// Which files a command is about, as they were typed: a query and options beside it.
struct FileChoice
{
    host::QueryRequest request;
    std::string order;
    int limit = -1; ///< at most so many; negative for all

    bool isSet() const { return !request.isEmpty(); }
};

/// Gives the command the arguments QUERY and the option --marked.
CLI::Option* addQuery(CLI::App& command, FileChoice& choice);
/// Gives the command a flag --all, which goes with no other option that it has by then: whoever
/// types it beside a query may mean either.
void addAll(CLI::App& command, bool& all, const char* help);
/// The options --artist, --album and --genre.
void addNames(CLI::App& command, FileChoice& choice);
/// The options --sort and --limit; names are what can be sorted by.
void addOrder(CLI::App& command, FileChoice& choice);

/// The chosen files of the loaded collection: as they are to be shown, or else in its order. Throws
/// HostError where none fits. On the kernel's thread.
QoFileDbItemArray chosenFiles(const FileChoice& choice);
/// The same for a command that shows much of each file: a single folder is refused, with advice.
QoFileDbItemArray chosenSingleFiles(const FileChoice& choice, const char* advice);
/// Refuses paths that are not whole in a query that is kept: they would be seen from another folder
/// the next time. what begins the sentence: "a living list". On the kernel's thread.
void refuseRelativePaths(const std::string& query, const char* what);
/// Says that nothing fits, and what may have been meant.
[[noreturn]] void complainOfNothing(const FileChoice& choice);
/// Leaves no more than the limit.
template <class Rows>
void applyLimit(Rows& rows, const FileChoice& choice)
{
    if (choice.limit >= 0 && rows.size() > static_cast<std::size_t>(choice.limit))
        rows.resize(static_cast<std::size_t>(choice.limit));
}
} // namespace qo::cli
