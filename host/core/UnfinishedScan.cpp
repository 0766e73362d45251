#include "core/UnfinishedScan.h"

#include "core/HostError.h"
#include "core/HostFiles.h"

#include <algorithm>
#include <cerrno>

namespace qo::host
{
namespace
{
constexpr std::size_t largestFile = 1 << 20;
}

UnfinishedScan::UnfinishedScan(const CString& folder) : m_file(folder + u"\\unfinished-scan")
{
    std::string content;
    if (readFile(m_file, largestFile, content) != 0)
        return;
    // A NUL is the one character that no path has.
    for (std::size_t start = 0; start < content.size();)
    {
        const std::size_t end = std::min(content.find('\0', start), content.size());
        const CString root = fromUtf8(content.substr(start, end - start));
        if (CQoCollPath(root).isValid())
            m_roots.Add(root);
        start = end + 1;
    }
}

void UnfinishedScan::begin(const CStringArray& roots) const
{
    std::string content;
    for (const CString& root : roots)
        content += toUtf8(root) + '\0';
    if (const int error = fileSystem().replaceFile(m_file, content.data(), content.size()))
        throw HostError(ExitCode::failed,
                        "the file " + shownPath(m_file) +
                            " cannot be written, so no scan is begun: " + errorWords(error));
}

void UnfinishedScan::end() const
{
    const int error = fileSystem().removeFile(m_file);
    if (error != 0 && error != ENOENT)
        throw HostError(ExitCode::failed,
                        "the file " + shownPath(m_file) +
                            " cannot be removed: " + errorWords(error));
}
} // namespace qo::host
