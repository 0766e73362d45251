#pragma once

#include <QoKernel/Kernel.h>

#include <string>

namespace qo::host
{
/// Copies of the database in the folder "snapshots" beside it, taken before anything that could
/// lose rows. The newest five are kept: the one just taken and the others by their times. On the
/// thread that calls the kernel.
class Snapshots
{
public:
    static constexpr int keptCount = 5;

    explicit Snapshots(const CString& database);

    /// The new copy's path. Throws HostError when it cannot be made: then nothing should go on.
    CString take();
    /// The same, but the older ones stay, however many they are, until removeOld().
    CString add();
    /// Keeps the copy just taken and the newest others.
    void removeOld(const CString& taken) const;
    /// A copy of the database under any other name, in place of a file that is there. Throws
    /// HostError; that file is then as it was.
    void copyTo(const CString& target) const;
    /// Takes one and says where it is, as a sentence for the user.
    std::string keep();
    /// Whether the newest copy was taken today, by its name.
    bool isOfToday() const;
    /// Whether the database was not written since the newest copy was taken.
    bool isNewerThanDatabase() const;
    /// By their times, newest first, in collection form; files of other names are no copies.
    CStringArray list() const;

private:
    void sweepUnfinished() const;

    CString m_database;
    CString m_folder;
};
} // namespace qo::host
