#pragma once

#include "core/roots/FarFolder.h"
#include "core/roots/IgnoreRules.h"

#include <QoKernel/Collection.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace qo::host
{
/// What every walk of ours through root folders sees of them: not what IgnoreRules leave out, and
/// no link to what lies in a root folder anyway, which has its own path there. Takes note of
/// folders that cannot be listed and of other disks. Where a disk is slow, a walk asks for several
/// folders at a time, on threads that use the platform alone. For one thread.
class RootLister final : public IFolderLister
{
public:
    /// All root folders of the collection, whether they are walked or not, and the names that
    /// IgnoreRules take.
    RootLister(const CStringArray& roots, const CString& ignoredNames);
    ~RootLister() override;
    RootLister(const RootLister&) = delete;
    RootLister& operator=(const RootLister&) = delete;

    /// Lets the walk remove what writers that were killed left behind; for who may change
    /// something.
    void clearOnTheWay() { m_clears = true; }

    int list(const CString& folder, std::vector<DirEntry>& entries) override;

    /// Calls for each regular file in the folder and below, in the order of a scan, until it
    /// answers false. Of a folder below a root folder, the rules of the folders above hold as well.
    void forEachFile(const CString& folder,
                     const std::function<bool(const CString& path, const FileInfo& info)>& visit);
    /// Whether a scan passes over the file, be it for its own name, that of a folder above, or
    /// since a link on the way leads back into a root folder. False while the rules of a folder
    /// above cannot be read.
    bool isPassedOver(const CString& file);

    /// Error numbers by folder.
    const std::map<CString, int>& errors() const { return m_errors; }
    /// Likewise of the files with the rules of folders.
    const std::map<CString, int>& ruleErrors() const { return m_ruleErrors; }
    const std::vector<FarFolder>& farFolders() const { return m_farFolders; }

private:
    class FoldersAhead;
    class WalkAhead;

    void readRules(const CString& folder);
    void readRulesAbove(const CString& folder);
    bool hasAllRulesFor(const CString& file) const;
    void noteFarFolders(const CString& folder,
                        const std::vector<DirEntry>& entries,
                        const std::optional<FileInfo>& here);
    bool leadsIntoRoot(const CString& link) const;

    std::vector<CString> m_roots; ///< as they are on the disk, with closing backslashes
    std::set<std::pair<std::uint64_t, std::uint64_t>> m_rootFolders; ///< device and inode
    IgnoreRules m_rules;
    bool m_clears = false;
    std::unique_ptr<FoldersAhead> m_ahead; ///< during a walk
    std::set<CString> m_readFolders;       ///< whose rules are known
    std::map<CString, int> m_errors;
    std::map<CString, int> m_ruleErrors;
    std::vector<FarFolder> m_farFolders;
};
} // namespace qo::host
