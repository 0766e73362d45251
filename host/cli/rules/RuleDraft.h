#pragma once

#include <QoKernel/Rules.h>

#include <optional>
#include <string>
#include <vector>

namespace qo::cli
{
/// A simple rule as it is typed: one way to name files, in one folder or, with a limit of tracks,
/// in two. Patterns hold attributes such as "{artist.name}".
struct RuleDraft
{
    std::optional<std::string> folder;     ///< none of the patterns: folder or names are kept
    std::optional<std::string> lessFolder; ///< for what the limit keeps out
    std::optional<std::string> music;
    std::optional<std::string> picture;
    std::optional<std::string> lyrics;
    bool keepIfEmpty = false; ///< a file keeps its name where an attribute has no value
    std::optional<int> artistLimit;
    std::optional<int> albumLimit;
    std::vector<std::string> defaults; ///< "{genre}=text" and the like

    /// Gives an empty rule the tree and the default values. notes gets sentences about patterns
    /// that had to be changed. Throws HostError (usage).
    void build(CReorganizeRule& rule, std::vector<std::string>& notes) const;
};

/// The text if it is UTF-8 without control characters. Throws HostError (usage) that names it.
CString checkedText(const std::string& typed, const std::string& what);
} // namespace qo::cli
