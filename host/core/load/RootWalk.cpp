#include "core/load/RootWalk.h"

#include <system_error>

#include <algorithm>
#include <chrono>
#include <utility>

namespace qo::host
{
namespace
{
/// How soon a walk that hangs on a disk lets the user interrupt it.
constexpr std::chrono::milliseconds betweenLooks(50);

std::vector<CString> realPaths(const CStringArray& folders)
{
    CollPathArray valid;
    CQoCollection::validateRootDirs(folders, valid);
    std::vector<CString> paths;
    for (const CQoCollPath& folder : valid)
    {
        const CString real = CQoUtils::getRealPath(folder);
        if (folder.isLocalDisk() && !real.IsEmpty())
            paths.push_back(real);
    }
    return paths;
}
} // namespace

RootWalk::RootWalk(const CStringArray& folders, RootLister& lister) : m_lister(lister)
{
    const std::vector<CString> paths = realPaths(folders);
    try
    {
        m_thread = std::thread([this, paths] { run(paths); });
    }
    catch (const std::system_error&)
    {
        run(paths); // nothing is lost but time
    }
}

RootWalk::~RootWalk()
{
    m_isStopped = true;
    if (m_thread.joinable())
        m_thread.join();
}

void RootWalk::run(const std::vector<CString>& folders) noexcept
{
    try
    {
        walk(folders);
    }
    catch (...)
    {
        m_failure = std::current_exception();
    }
    const std::lock_guard lock(m_mutex);
    m_hasEnded = true;
    m_end.notify_all();
}

void RootWalk::walk(const std::vector<CString>& folders)
{
    for (const CString& folder : folders)
        m_lister.forEachFile(folder,
                             [this](const CString& path, const FileInfo& info)
                             {
                                 m_files.push_back({path, info});
                                 return !m_isStopped;
                             });
    std::stable_sort(m_files.begin(),
                     m_files.end(),
                     [](const FoundFile& a, const FoundFile& b)
                     { return a.path.CompareNoCase(b.path) < 0; });
}

std::vector<FoundFile> RootWalk::files(IQoProgress& progress)
{
    std::unique_lock lock(m_mutex);
    while (!m_end.wait_for(lock, betweenLooks, [this] { return m_hasEnded; }))
    {
        if (!progress.isCanceled())
            continue;
        m_isStopped = true;
        return {};
    }
    if (m_failure)
        std::rethrow_exception(m_failure);
    if (progress.isCanceled())
        return {};
    return std::move(m_files);
}
} // namespace qo::host
