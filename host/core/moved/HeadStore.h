#pragma once

#include "core/store/StoreRows.h"

#include <QoKernel/Collection.h>

#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace qo::host
{
/// What the sound of each file begins with, by the record's lasting id, as the host's store has it:
/// by that a file that vanished is known again elsewhere. Heads that cannot be read count as none:
/// all of them can be made again. On the thread that calls the kernel.
class HeadStore
{
public:
    /// Of the session's data folder.
    HeadStore();

    /// Empty when none is stored for the state in which the record knows the file.
    std::optional<std::uint64_t> headOf(const QoFileDbItem& record) const;
    /// Takes in heads of what is new or has changed, which reads the start of each of those files,
    /// and drops those of records that are gone. False when the progress stopped it, with what was
    /// read so far kept.
    bool update(const QoFileDbItemArray& records, IQoProgress& progress);
    /// Brings what changed into the store. With the lock of the data folder. Throws HostError.
    void save();

private:
    static bool fits(const StoredHead& head, const QoFileDbItem& record);

    std::unordered_map<std::string, StoredHead> m_heads;
    std::vector<std::string> m_gone;
    std::unordered_set<std::string> m_changed;
};
} // namespace qo::host
