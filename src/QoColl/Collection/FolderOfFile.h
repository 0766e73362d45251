#pragma once

#include "QoColl/Collection/FilePathParts.h"
#include "common/CollPath.h"

#include <cstring>

namespace qo
{
/// The folder of the file that was asked for last. Records stand in path order, so most of them lie
/// in the folder of the one before; for those nothing is parsed.
class FolderOfFile
{
public:
    /// True when the file lies in another folder than the one before.
    bool moveTo(const CString& filePath)
    {
        const std::u16string_view whole = filePath.view();
        if (isDirectlyBelow(whole))
            return false;
        const std::u16string_view name = plainDriveFileName(whole);
        const std::u16string_view prefix = whole.substr(0, whole.size() - name.size());
        m_prefix = name.empty() ? CString() : CString(prefix);
        m_path = CQoCollPath(filePath).getParent();
        return true;
    }
    const CQoCollPath& path() const { return m_path; }

private:
    /// Whether the path is that of the folder and one name.
    bool isDirectlyBelow(std::u16string_view path) const noexcept
    {
        const auto length = static_cast<std::size_t>(m_prefix.GetLength());
        return length > 0 && path.size() > length &&
               std::memcmp(path.data(), m_prefix.GetString(), length * sizeof(char16_t)) == 0 &&
               path.find(u'\\', length) == std::u16string_view::npos;
    }

    CString m_prefix; ///< text of the folder with its backslash; empty for paths that need parsing
    CQoCollPath m_path;
};
} // namespace qo
