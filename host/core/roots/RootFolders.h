#pragma once

#include <QoKernel/Kernel.h>

#include <string>

namespace qo::host
{
/// The folders that the collection is made of, with the kind of each, as the settings hold them.
/// The kernel's output folders are not among them: this host has nothing that fills them. Paths in
/// collection form. On the thread that calls the kernel.
class RootFolders
{
public:
    /// Reads the settings.
    RootFolders();

    const CStringArray& folders() const { return m_folders; }
    const CQoPathsInfoMap& kinds() const { return m_kinds; }
    CQoPathInfo::EType kind(const CString& folder) const { return m_kinds.getType(folder); }

    /// The root folder that equals the path or holds it; "" when there is none.
    CString holder(const CString& path) const;
    /// False when it is listed already with that kind. Throws HostError for a folder of a device.
    bool add(const CString& folder, CQoPathInfo::EType kind);
    /// Also removes a folder that is not listed but that the database still knows.
    void remove(const CString& folder);
    /// Whether the user removed it and no load has taken its files out of the collection yet.
    bool wasRemoved(const CString& folder) const;
    bool hasRemoved() const { return !m_removed.IsEmpty(); }
    void forgetRemoved() { m_removed.RemoveAll(); }
    /// Puts the list into the settings, which the caller saves.
    void store() const;

    /// "all", "none" or "audio".
    static const char* kindName(CQoPathInfo::EType kind);
    /// False for any other name.
    static bool kindFromName(const std::string& name, CQoPathInfo::EType& kind);

private:
    void storeRemoved() const;

    CStringArray m_folders;
    CStringArray m_removed;
    CQoPathsInfoMap m_kinds;
};
} // namespace qo::host
