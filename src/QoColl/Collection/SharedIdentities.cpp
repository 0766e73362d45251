#include "QoColl/Collection/SharedIdentities.h"

#include "QoColl/Db/QoCollDb.h"
#include "QoColl/Db/Records/QoFileDbItem.h"

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
        if (!m_new.insert(item->velmoraId.view()).second)
            m_shared.insert(item->velmoraId.view());
    }
    // An id that a new record has and that is seen elsewhere is shared.
    const auto see = [this](std::u16string_view velmoraId)
    {
        if (m_new.contains(velmoraId))
            m_shared.insert(velmoraId);
    };
    for (const QoFileDbItemPtr& item : files)
    {
        if (item->dbState != dbState::added)
            see(item->velmoraId.view());
    }
    db.getVelmoraIdsOfOthers(collId, m_others);
    for (const CString& velmoraId : m_others)
        see(velmoraId.view());
}

bool SharedIdentities::mayBeShared(const CString& velmoraId) const
{
    // A stored row may lack an id that its record has got since.
    return !m_isKnown || velmoraId.IsEmpty() || m_shared.contains(velmoraId.view());
}
} // namespace qo
