#include "core/collection/KnownNotes.h"

#include "core/base/UserName.h"
#include "core/session/Session.h"
#include "core/store/HostStore.h"

namespace qo::host
{
void KnownNotes::load()
{
    m_byId = HostStore(Session::folder()).fileNotes();
    m_none.addedBy = ownerOf(Session::folder());
    for (auto& [id, notes] : *m_byId)
    {
        if (notes.addedBy.IsEmpty())
            notes.addedBy = m_none.addedBy;
    }
}

const FileNotes& KnownNotes::of(const QoFileDbItem& item)
{
    if (!m_byId)
        load();
    if (!m_last || m_lastId != item.velmoraId)
    {
        const auto found = m_byId->find(item.velmoraId);
        m_last = found == m_byId->end() ? &m_none : &found->second;
        m_lastId = item.velmoraId;
    }
    return *m_last;
}
} // namespace qo::host
