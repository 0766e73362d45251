#pragma once

#include "core/store/StoreRows.h"

#include <QoKernel/Collection.h>

#include <optional>
#include <unordered_map>

namespace qo::host
{
/// The notes of all files, read from the store when they are first asked for. On the kernel's
/// thread.
class KnownNotes
{
public:
    /// Those of a file without any are empty but for who added it. Throws HostError.
    const FileNotes& of(const QoFileDbItem& item);

private:
    void load();

    std::optional<std::unordered_map<LastingId, FileNotes>> m_byId;
    FileNotes m_none;
    LastingId m_lastId; ///< the fields of a file are asked for one after the other
    const FileNotes* m_last = nullptr;
};
} // namespace qo::host
