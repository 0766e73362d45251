#include "core/roots/RootLister.h"

#include "core/base/HostFiles.h"
#include "core/base/SystemPath.h"

#include <QoKernel/Inside.h>

#include <algorithm>

namespace qo::host
{
namespace
{
constexpr std::size_t largestRules = std::size_t(1) << 20;

/// A file that waits for its place in the middle of a run of moves, as ".qo-20261122-220503-7.mp3":
/// it has a record, and stays in the collection although its name is a hidden one.
bool isWaiting(const CString& name)
{
    constexpr std::u16string_view start = u".qo-";
    std::u16string_view rest = name.view();
    if (!rest.starts_with(start))
        return false;
    rest.remove_prefix(start.size());
    rest = rest.substr(0, rest.find(u'.'));
    return rest.find(u'-') != rest.npos && rest.find_first_not_of(u"0123456789-") == rest.npos;
}

bool isFolderEntry(const DirEntry& entry)
{
    return entry.info.kind == FileKind::directory;
}

/// A folder as the disk has it.
struct Listed
{
    std::vector<DirEntry> entries = {};
    int error = 0;
    std::optional<FileInfo> here = {}; ///< of the folder itself; only where it has folders
};

std::size_t listFolder(const CString& folder, Listed& listed)
{
    listed.error = fileSystem().list(folder, listed.entries);
    FileInfo here;
    if (std::any_of(listed.entries.begin(), listed.entries.end(), isFolderEntry) &&
        fileSystem().info(folder, Spelling::exact, here) == 0)
        listed.here = here;
    constexpr std::size_t bytesOfName = 64;
    return listed.entries.size() * (sizeof(DirEntry) + bytesOfName);
}
} // namespace

/// Folders of one walk that wait to be listed, in its order.
class RootLister::FoldersAhead
{
public:
    void add(const CString& folder) { m_pool.add(folder); }
    Listed take(const CString& folder)
    {
        Listed listed;
        m_pool.take(folder, listed, {});
        return listed;
    }

private:
    // A disk that answers from memory is listed faster by the walk alone.
    AheadPool<Listed> m_pool{listFolder, {.threads = 0}};
};

/// What was listed ahead is as old as the walk, and goes with it.
class RootLister::WalkAhead
{
public:
    explicit WalkAhead(std::unique_ptr<FoldersAhead>& ahead) : m_ahead(ahead)
    {
        m_ahead = std::make_unique<FoldersAhead>();
    }
    ~WalkAhead() { m_ahead.reset(); }
    WalkAhead(const WalkAhead&) = delete;
    WalkAhead& operator=(const WalkAhead&) = delete;

private:
    std::unique_ptr<FoldersAhead>& m_ahead;
};

RootLister::~RootLister() = default;

RootLister::RootLister(const CStringArray& roots, const CString& ignoredNames)
    : m_rules(ignoredNames)
{
    for (const CString& root : roots)
    {
        const CString real = CQoUtils::getRealPath(CQoCollPath(root));
        FileInfo info;
        if (real.IsEmpty() || fileSystem().info(real, Spelling::exact, info) != 0)
            continue;
        m_rootFolders.emplace(info.device, info.inode);
        const std::string resolved = resolvedPath(toSystemPath(real));
        m_roots.push_back(addBackslash(resolved.empty() ? real : fromSystemPath(resolved)));
    }
}

void RootLister::readRules(const CString& folder)
{
    if (!m_readFolders.insert(addBackslash(folder)).second)
        return;
    const CString file = addBackslash(folder) + IgnoreRules::fileName;
    FileInfo info;
    if (fileSystem().info(file, Spelling::exact, info) != 0 || info.kind != FileKind::regular)
        return;
    std::string content;
    if (const int error = readFile(file, largestRules, content))
        m_ruleErrors.insert_or_assign(file, error);
    else
        m_rules.setFile(folder, content);
}

bool RootLister::hasAllRulesFor(const CString& file) const
{
    return std::none_of(m_ruleErrors.begin(),
                        m_ruleErrors.end(),
                        [&file](const auto& unread)
                        {
                            const CString folder = CQoCollPath(unread.first).getParent().toString();
                            return file.view().starts_with(addBackslash(folder).view());
                        });
}

void RootLister::readRulesAbove(const CString& folder)
{
    const CString place = addBackslash(folder);
    for (const CString& root : m_roots)
    {
        if (!place.view().starts_with(root.view()))
            continue;
        for (int end = root.GetLength(); end > 0; end = place.Find(u'\\', end) + 1)
            readRules(place.Left(end - 1));
    }
}

bool RootLister::leadsIntoRoot(const CString& link) const
{
    const std::string resolved = resolvedPath(toSystemPath(link));
    const CString target = addBackslash(fromSystemPath(resolved));
    return std::any_of(m_roots.begin(),
                       m_roots.end(),
                       [&](const CString& root) { return target.view().starts_with(root.view()); });
}

void RootLister::noteFarFolders(const CString& folder,
                                const std::vector<DirEntry>& entries,
                                const std::optional<FileInfo>& here)
{
    for (const DirEntry& entry : entries)
    {
        if (here && isFolderEntry(entry) &&
            (entry.info.isLink || entry.info.device != here->device))
            m_farFolders.push_back(
                {addBackslash(folder) + entry.name, entry.info.device, entry.info.isLink});
    }
}

int RootLister::list(const CString& folder, std::vector<DirEntry>& entries)
{
    if (m_clears)
        clearTemporaries(folder);
    Listed listed;
    if (m_ahead)
        listed = m_ahead->take(folder);
    else
        listFolder(folder, listed);
    entries = std::move(listed.entries);
    if (listed.error != 0)
        m_errors.insert_or_assign(folder, listed.error);
    const auto isRules = [](const DirEntry& entry) { return entry.name == IgnoreRules::fileName; };
    if (std::any_of(entries.begin(), entries.end(), isRules))
        readRules(folder);
    std::erase_if(entries,
                  [&](const DirEntry& entry)
                  {
                      if (!isWaiting(entry.name) &&
                          m_rules.isLeftOut(folder, entry.name, isFolderEntry(entry)))
                          return true;
                      return entry.info.isLink && entry.info.kind != FileKind::other &&
                             leadsIntoRoot(addBackslash(folder) + entry.name);
                  });
    noteFarFolders(folder, entries, listed.here);
    for (const DirEntry& entry : entries)
    {
        // The walk comes to links at its end.
        if (m_ahead && isFolderEntry(entry) && !entry.info.isLink)
            m_ahead->add(addBackslash(folder) + entry.name);
    }
    return listed.error;
}

void RootLister::forEachFile(
    const CString& folder,
    const std::function<bool(const CString& path, const FileInfo& info)>& visit)
{
    readRulesAbove(folder);
    QoKernel::CFileFilter filter;
    filter.m_flags = QoKernel::CFileFilter::testType;
    filter.m_typeMask = QoKernel::CFileFilter::plainFiles;
    QoKernel::CFileFinder finder;
    const WalkAhead ahead(m_ahead);
    for (bool any = finder.findFirst({folder, true, this, &m_rootFolders}, filter); any;
         any = finder.findNext())
    {
        if (!visit(finder.getFilePath(), finder.getFileInfo()))
            return;
    }
}

bool RootLister::isPassedOver(const CString& file)
{
    readRulesAbove(CQoCollPath(file).getParent().toString());
    const auto root = std::find_if(m_roots.begin(),
                                   m_roots.end(),
                                   [&file](const CString& folder)
                                   { return file.view().starts_with(folder.view()); });
    if (root == m_roots.end() || !hasAllRulesFor(file))
        return false;
    for (int start = root->GetLength(); start < file.GetLength();)
    {
        const int backslash = file.Find(u'\\', start);
        const bool isFolder = backslash >= 0;
        const int end = isFolder ? backslash : file.GetLength();
        const CString path = file.Left(end);
        const CString name = file.Mid(start, end - start);
        if ((!isWaiting(name) && m_rules.isLeftOut(file.Left(start - 1), name, isFolder)) ||
            (fileSystem().isLink(path) && leadsIntoRoot(path)))
            return true;
        start = end + 1;
    }
    return false;
}
} // namespace qo::host
