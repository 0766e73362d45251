#pragma once

#include <QoKernel/Inside.h>
#include <QoKernel/Kernel.h>

#include <thread>

namespace qo::host
{
/// While it lives, a thread of its own lists the folders below the roots ahead of the walk that the
/// kernel is going to make of them. Made and destroyed on the kernel's thread; its end waits for
/// the listing under way. Where no thread can be started, the walk does without.
class WalkAhead
{
public:
    /// The roots as the kernel is given them; those of the local disk count.
    explicit WalkAhead(const CStringArray& roots);
    ~WalkAhead();
    WalkAhead(const WalkAhead&) = delete;
    WalkAhead& operator=(const WalkAhead&) = delete;

private:
    FolderAhead m_folders;
    std::thread m_thread;
};
} // namespace qo::host
