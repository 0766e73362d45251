#pragma once

#include "platform/SpecialFolders.h"

#include <mutex>
#include <string>

namespace qo
{
/// ISpecialFolders by the XDG conventions for base and user directories.
class PosixSpecialFolders final : public ISpecialFolders
{
public:
    CString data() const override;
    CString state() const override;
    CString cache() const override;
    CString music() const override;
    CString videos() const override;
    CString home() const override;
    std::vector<CString> userFolders() const override;
    CString systemTemp() const override;
    CString program() const override;
    void setBase(const CString& folder) override;

private:
    /// A folder of the application, by an XDG variable or its default below the home folder.
    CString appFolder(const char* variable, const char* fallback, const char16_t* belowBase) const;
    /// A folder of the user, by an XDG variable, by user-dirs.dirs or its usual name.
    CString userFolder(const std::string& name, const char* fallback) const;

    mutable std::mutex m_mutex;
    CString m_base; ///< see setBase(); "" for the system's folders
};
} // namespace qo
