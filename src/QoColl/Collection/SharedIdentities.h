#pragma once

#include "QoColl/Db/Forward.h"
#include "types/StringArray.h"

#include <string_view>
#include <unordered_set>

class CQoCollDb;

namespace qo
{
/// Which of the new records of a save have an identity that another row may have too. The
/// fingerprint values of a row go to every row of its identity; for one that stands alone its own
/// insertion has written them already. Looking through all records pays only for many new ones:
/// for few, every identity counts as shared.
class SharedIdentities
{
public:
    /// The records must stay as they are while this lives.
    SharedIdentities(const QoFileDbItemArray& files, CQoCollDb& db, const CString& collId);

    bool mayBeShared(const CString& velmoraId) const;

private:
    bool m_isKnown = false;
    CStringArray m_others; ///< identities of other collections' rows
    std::unordered_set<std::u16string_view> m_new;
    std::unordered_set<std::u16string_view> m_shared;
};
} // namespace qo
