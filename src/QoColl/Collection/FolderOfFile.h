#pragma once

#include "common/CollPath.h"
#include "common/FilePathParts.h"

#include <cstring>

namespace qo
{
/// The folder of the file that was asked for last. Records are sorted by path, so most of them are
/// in the folder of the one before, and nothing is parsed for these.
class FolderOfFile
{
public:
    /// Makes the file's folder the current one; true when that is another folder than before.
    bool moveTo(const CString& filePath)
    {
        const std::u16string_view whole = filePath.view();
        if (isDirectlyBelow(whole))
            return false;
        const std::u16string_view name = plainFileName(whole);
        const std::u16string_view prefix = whole.substr(0, whole.size() - name.size());
        m_prefix = name.empty() ? CString() : CString(prefix);
        m_path = CQoCollPath(filePath).getParent();
        return true;
    }
    const CQoCollPath& path() const { return m_path; }

private:
    /// Whether the path is the folder's path and one name.
    bool isDirectlyBelow(std::u16string_view path) const noexcept
    {
        const auto length = static_cast<std::size_t>(m_prefix.GetLength());
        return length > 0 && path.size() > length &&
               std::memcmp(path.data(), m_prefix.GetString(), length * sizeof(char16_t)) == 0 &&
               path.find(u'\\', length) == std::u16string_view::npos;
    }

    CString m_prefix; ///< the folder with a closing backslash; "" for paths that need parsing
    CQoCollPath m_path;
};
} // namespace qo
