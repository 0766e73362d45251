#pragma once

#include "common/CollPath.h"
#include "common/FilePathParts.h"

namespace qo
{
/// The folder of the file that was asked for last. Records are sorted by path, so most of them are
/// in the folder of the one before, and nothing is parsed for these.
class FolderOfFile
{
public:
    /// Makes the file's folder the current one; true when that is another folder than before.
    bool moveTo(const FilePath& file)
    {
        if (!m_prefix.IsEmpty() && file.folder() == m_prefix && !file.name().IsEmpty())
            return false;
        m_prefix = plainFileName(file).empty() ? CString() : file.folder();
        m_path = CQoCollPath(file).getParent();
        return true;
    }
    const CQoCollPath& path() const { return m_path; }

private:
    CString m_prefix; ///< the folder with a closing backslash; "" for paths that need parsing
    CQoCollPath m_path;
};
} // namespace qo
