#pragma once

#include "common/Log.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"

namespace qo
{
/// A local file that is removed at the end of the scope, also by an exception, unless it was kept.
class PartFile
{
public:
    /// Without a word about a removal that fails.
    explicit PartFile(const CString& path) : PartFile(path, 0, nullptr) {}
    /// A removal that fails is logged at the level with the message, which has one %s for the path.
    PartFile(const CString& path, int level, const char16_t* message)
        : m_path(path), m_level(level), m_message(message)
    {
    }
    ~PartFile()
    {
        if (!m_isKept && fileSystem().exists(m_path) && fileSystem().removeFile(m_path) != 0 &&
            m_message)
            log(m_level, m_message, m_path);
    }
    PartFile(const PartFile&) = delete;
    PartFile& operator=(const PartFile&) = delete;

    void keep() { m_isKept = true; }

private:
    const CString m_path;
    const int m_level;
    const char16_t* const m_message;
    bool m_isKept = false;
};
} // namespace qo
