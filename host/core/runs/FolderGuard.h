#pragma once

#include <string>
#include <unordered_set>
#include <vector>

namespace qo::host
{
/// Lets a run into the folders that lie below its bases, and only by ways on which no link stands:
/// a link would lead to who knows where. A base itself may be one. Not for several threads at once.
class FolderGuard
{
public:
    /// No bases: any folder will do.
    explicit FolderGuard(std::vector<std::string> bases);

    /// Whether the folder can be used; 0, ELOOP for one that a link leads to, EPERM for one below
    /// no base, ENOENT for one that is not there, or another error number. A good answer is kept.
    int check(const std::string& folder);
    /// The error of check() as a clause for people.
    std::string reason(const std::string& folder, int error) const;
    bool isBelowBase(const std::string& folder) const;

private:
    bool isBase(const std::string& folder) const;

    std::vector<std::string> m_bases;
    std::unordered_set<std::string> m_checked;
};
} // namespace qo::host
