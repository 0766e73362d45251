#pragma once

#include <QoKernel/Kernel.h>

#include <map>
#include <string>
#include <vector>

namespace qo::host
{
/// Sees to it that the collection's database is one that the kernel may open, and that nothing is
/// lost when it has to be made anew. On the thread that calls the kernel.
class DatabaseGuard
{
public:
    using TableCounts = std::map<std::string, std::int64_t>;

    explicit DatabaseGuard(const CString& database) : m_database(database) {}

    /// Makes an absent database. One of another version, one that is locked, what is no regular
    /// file and changes without the database they belong to are left alone and end in a HostError;
    /// what is no sound database is set aside and replaced by an empty one. Sentences for the user
    /// about what was done.
    std::vector<std::string> prepare();

    /// The rows of each table; throws what the database layer throws.
    static TableCounts countRows(const CString& database);

private:
    enum class State
    {
        absent,
        unreadable,
        sound
    };

    std::vector<std::string> prepareGuarded();
    State look() const;
    State open() const;
    /// That nothing is there, unless a side file still holds something.
    State absent() const;
    void refuseOtherVersion() const;
    bool hasVersion(CString& version) const;

    CString m_database;
};
} // namespace qo::host
