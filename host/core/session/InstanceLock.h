#pragma once

#include <string>

namespace qo::host
{
/// Held while this process works with a data folder; gives way with the process, however it ends.
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
