#pragma once

#include "QoColl/Collection/FilePathParts.h"
#include "common/CollPath.h"

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
        const std::u16string_view name = plainDriveFileName(whole);
        const std::u16string_view prefix = whole.substr(0, whole.size() - name.size());
        if (!name.empty() && !m_prefix.IsEmpty() && prefix == m_prefix.view())
            return false;
        m_prefix = name.empty() ? CString() : CString(prefix);
        m_path = CQoCollPath(filePath).getParent();
        return true;
    }
    const CQoCollPath& path() const { return m_path; }

private:
    CString m_prefix; ///< text of the folder with its backslash; empty for paths that need parsing
    CQoCollPath m_path;
};
} // namespace qo
