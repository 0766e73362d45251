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
    CString appFolder(const char* variable, const char* fallback, const char16_t* belowBase) const;
    CString userFolder(const std::string& name, const char* fallback) const;

    mutable std::mutex m_mutex;
    CString m_base;
};
} // namespace qo
