#include "core/load/UnfinishedScan.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string_view>

namespace qo::host
{
namespace
{
constexpr std::size_t largestMark = 1 << 20;
/// Stands before a number in place of a root, in no form that a path has.
constexpr std::string_view namesSince = "names since ";

std::string contentOf(const CStringArray& roots)
{
    // A NUL is the one character that no path has.
    std::string content;
    for (const CString& root : roots)
        content += toUtf8(root) + '\0';
    return content;
}
} // namespace

UnfinishedScan::UnfinishedScan(const CString& folder) : m_file(folder + u"\\unfinished-scan")
{
    std::string content;
    if (readFile(m_file, largestMark, content) != 0)
        return;
    for (std::size_t start = 0; start < content.size();)
    {
        const std::size_t end = std::min(content.find('\0', start), content.size());
        const std::string entry = content.substr(start, end - start);
        const CString root = fromUtf8(entry);
        if (entry.starts_with(namesSince))
            m_lastSave = std::strtoll(entry.c_str() + namesSince.size(), nullptr, 10);
        else if (CQoCollPath(root).isValid())
            m_roots.Add(root);
        start = end + 1;
    }
}

void UnfinishedScan::begin(const CStringArray& roots) const
{
    write(contentOf(roots));
}

void UnfinishedScan::beginNames(const CStringArray& roots, const FILETIME& lastSave) const
{
    write(contentOf(roots) + std::string(namesSince) + std::to_string(toTicks(lastSave)) + '\0');
}

void UnfinishedScan::settle(const FILETIME& lastSave)
{
    if (!m_lastSave)
        return;
    const bool wereNamesSaved = *m_lastSave != toTicks(lastSave);
    m_lastSave.reset();
    if (!wereNamesSaved)
        return begin(m_roots);
    end();
    m_roots.RemoveAll();
}

void UnfinishedScan::write(std::string content) const
{
    if (const int error = fileSystem().replaceFile(m_file, content.data(), content.size()))
        throw HostError(ExitCode::failed,
                        "the file " + shownPath(m_file) +
                            " cannot be written: " + errorWords(error));
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
