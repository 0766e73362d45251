#pragma once

#include <QoKernel/Kernel.h>

#include <mutex>
#include <string>

namespace qo::host
{
/// The kernel's logger while it lives: passes every line on to the built-in one and remembers the
/// last failure of a collection operation, which the kernel tells to the log alone.
class FailureMemory final : public CLoggerEx
{
public:
    FailureMemory();
    ~FailureMemory() override;

    /// Also remembers why a tag could not be read or written, which the kernel logs as a detail.
    void setWithDetails(bool withDetails);

    /// The last failure since forget(), in the kernel's words; empty when there was none.
    std::string lastFailure() const;
    void forget();

    void writeText(int level, const CString& text) override;

private:
    mutable std::mutex m_mutex;
    CString m_lastFailure;
};
} // namespace qo::host
