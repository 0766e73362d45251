#pragma once

#include <chrono>
#include <string>

namespace qo::host
{
/// The lock of a data folder, held while this process works with it. The system releases it when
/// the process ends, in whatever way.
class InstanceLock
{
public:
    static constexpr std::chrono::milliseconds patience{5000};

    /// `doing` is what those who wait are told of this process, beside its id. Throws HostError:
    /// busy, with both of the holder, when another process still holds it after the patience.
    explicit InstanceLock(const std::string& file,
                          const std::string& doing = std::string(),
                          std::chrono::milliseconds patience = InstanceLock::patience);
    ~InstanceLock();
    InstanceLock(const InstanceLock&) = delete;
    InstanceLock& operator=(const InstanceLock&) = delete;

private:
    int m_fd = -1;
};
} // namespace qo::host
