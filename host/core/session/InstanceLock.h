#pragma once

#include <string>

namespace qo::host
{
/// The lock of a data folder, held while this process works with it. The system releases it when
/// the process ends, in whatever way.
class InstanceLock
{
public:
    /// Throws HostError: busy, with the holder's process id, when another process holds it.
    explicit InstanceLock(const std::string& file);
    ~InstanceLock();
    InstanceLock(const InstanceLock&) = delete;
    InstanceLock& operator=(const InstanceLock&) = delete;

private:
    int m_fd = -1;
};
} // namespace qo::host
