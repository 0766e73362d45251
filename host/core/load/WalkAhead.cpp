#include "core/load/WalkAhead.h"

#include <QoKernel/Collection.h>

#include <system_error>

#include <vector>

namespace qo::host
{
namespace
{
/// Where the kernel's walk starts.
std::vector<CString> walkedFrom(const CStringArray& roots)
{
    CollPathArray valid;
    CQoCollection::validateRootDirs(roots, valid);
    std::vector<CString> starts;
    for (const CQoCollPath& root : valid)
    {
        const CString real = CQoUtils::getRealPath(root);
        if (root.isLocalDisk() && !real.IsEmpty())
            starts.push_back(real);
    }
    return starts;
}
} // namespace

WalkAhead::WalkAhead(const CStringArray& roots) : m_folders(walkedFrom(roots))
{
    try
    {
        m_thread = std::thread([this] { m_folders.run(); });
        setFolderAhead(&m_folders);
    }
    catch (const std::system_error&)
    {
        // Nothing is lost but time.
    }
}

WalkAhead::~WalkAhead()
{
    setFolderAhead(nullptr);
    m_folders.stop();
    if (m_thread.joinable())
        m_thread.join();
}
} // namespace qo::host
