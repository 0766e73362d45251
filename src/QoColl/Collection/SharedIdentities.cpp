#include "QoColl/Collection/SharedIdentities.h"

#include "QoColl/Db/QoCollDb.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "types/StringArray.h"

#include <vector>

namespace qo
{
namespace
{
/// Looking through this many records costs about as much as writing one row.
constexpr std::size_t recordsPerStatement = 64;
} // namespace

SharedIdentities::SharedIdentities(const QoFileDbItemArray& files,
                                   CQoCollDb& db,
                                   const CString& collId)
{
    std::vector<const QoFileDbItem*> added;
    for (const QoFileDbItemPtr& item : files)
    {
        if (item->dbState == dbState::added)
            added.push_back(item.get());
    }
    if (added.empty() ||
        static_cast<std::size_t>(files.GetSize()) / recordsPerStatement > added.size())
        return;
    m_isKnown = true;
    m_new.reserve(added.size());
    for (const QoFileDbItem* item : added)
    {
        if (!m_new.insert(item->velmoraId).second)
            m_shared.insert(item->velmoraId);
    }
    // An id that a new record has and that is seen elsewhere is shared.
    const auto see = [this](const LastingId& velmoraId)
    {
        if (m_new.contains(velmoraId))
            m_shared.insert(velmoraId);
    };
    for (const QoFileDbItemPtr& item : files)
    {
        if (item->dbState != dbState::added)
            see(item->velmoraId);
    }
    CStringArray others;
    db.getVelmoraIdsOfOthers(collId, others);
    for (const CString& velmoraId : others)
        see(velmoraId);
}

bool SharedIdentities::mayBeShared(const LastingId& velmoraId) const
{
    // A stored row may lack an id that its record has got since.
    return !m_isKnown || velmoraId.IsEmpty() || m_shared.contains(velmoraId);
}
} // namespace qo
