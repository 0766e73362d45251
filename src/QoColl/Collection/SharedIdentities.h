#pragma once

#include "QoColl/Db/Forward.h"
#include "types/LastingId.h"

#include <unordered_set>

class CQoCollDb;

namespace qo
{
/// Which of the new records of a save have a lasting id (velmoraId) that other rows may have too.
/// The fingerprint values of a row must be written to all rows of its id; for an id with one row,
/// the insertion has already written them. Finding out costs a look at all records, which pays only
/// when many are new; when few are, every id counts as shared.
class SharedIdentities
{
public:
    /// Looks through files and, for ids of other collections, the database.
    SharedIdentities(const QoFileDbItemArray& files, CQoCollDb& db, const CString& collId);

    /// False only if no other row can have that id.
    bool mayBeShared(const LastingId& velmoraId) const;

private:
    bool m_isKnown = false;
    std::unordered_set<LastingId> m_new;
    std::unordered_set<LastingId> m_shared;
};
} // namespace qo
