#pragma once

#include "platform/Drives.h"
#include "platform/Platform.h"

#include <map>

/// The drives of the system while it lives: those that a test puts in. DriveMap is left to the
/// test.
class FakeDrives : public qo::IDrives
{
public:
    FakeDrives() { qo::setDrives(this); }
    ~FakeDrives() override { qo::setDrives(nullptr); }
    FakeDrives(const FakeDrives&) = delete;
    FakeDrives& operator=(const FakeDrives&) = delete;

    std::vector<qo::DriveChange>
    update(const std::function<bool(const CString&)>& isLeftAlone) override
    {
        wasLeftAlone = !mountFolder.IsEmpty() && isLeftAlone(mountFolder);
        return std::exchange(m_changes, {});
    }
    bool look(char16_t letter, qo::DriveInfo& info) override
    {
        const auto found = m_drives.find(letter);
        if (found != m_drives.end())
            info = found->second;
        return found != m_drives.end();
    }

    std::vector<qo::MountedDrive> mounted() override { return {}; }

    /// Plugs in a stick.
    void put(char16_t letter, const CString& id, const CString& label = CString())
    {
        using Info = qo::DriveInfo;
        put(letter,
            Info{Info::Kind::removable,
                 Info::Medium::removable,
                 Info::Bus::usb,
                 id,
                 u"Maker",
                 label});
    }
    void put(char16_t letter, const qo::DriveInfo& info)
    {
        m_drives[letter] = info;
        m_changes.push_back({letter, true});
    }
    void take(char16_t letter)
    {
        m_drives.erase(letter);
        m_changes.push_back({letter, false});
    }

    CString mountFolder;       ///< is asked for with each update()
    bool wasLeftAlone = false; ///< the last answer

private:
    std::map<char16_t, qo::DriveInfo> m_drives;
    std::vector<qo::DriveChange> m_changes;
};
