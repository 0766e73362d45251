#pragma once

#include <QoKernel/Collection.h>

#include <string>

namespace qo::cli
{
/// The records of the loaded collection at or below a typed path, in the collection's order. On the
/// kernel's thread.
class FoundFiles
{
public:
    /// An empty path means all. Throws HostError when the collection has nothing there.
    explicit FoundFiles(const std::string& typed);

    const QoFileDbItemArray& files() const { return m_files; }
    /// The spelling that was found; empty for all.
    const CString& path() const { return m_path; }

private:
    bool take(const QoFileDbItemArray& all, const CString& path);

    QoFileDbItemArray m_files;
    CString m_path;
};
} // namespace qo::cli
