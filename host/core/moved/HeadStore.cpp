#include "core/moved/HeadStore.h"

#include "core/base/HostError.h"
#include "core/session/Session.h"
#include "core/store/HostStore.h"

#include <QoKernel/Tags.h>

namespace qo::host
{
namespace
{
std::string keyOf(const QoFileDbItem& record)
{
    return toUtf8(record.velmoraId);
}
} // namespace

HeadStore::HeadStore()
{
    try
    {
        for (StoredHead& head : HostStore(Session::folder()).heads())
            m_heads.emplace(head.id, head);
    }
    catch (const HostError& error)
    {
        log(level::warning, u"HeadStore : %s", fromUtf8(error.what()));
    }
}

bool HeadStore::fits(const StoredHead& head, const QoFileDbItem& record)
{
    return head.size == record.size && head.modified == toTicks(record.modifTime);
}

std::optional<std::uint64_t> HeadStore::headOf(const QoFileDbItem& record) const
{
    const auto found = m_heads.find(keyOf(record));
    if (found == m_heads.end() || !fits(found->second, record))
        return {};
    return found->second.digest;
}

bool HeadStore::update(const QoFileDbItemArray& records, IQoProgress& progress)
{
    std::unordered_map<std::string, StoredHead> current;
    bool isWhole = true;
    progress.setStage(IQoProgress::stageCheck);
    progress.setRange(IQoProgress::rangeKnown, records.GetSize());
    for (const QoFileDbItemPtr& record : records)
    {
        progress.step(1);
        const std::string key = keyOf(*record);
        if (key.empty() || record->size <= 0)
            continue;
        const auto known = m_heads.find(key);
        if (known != m_heads.end() && fits(known->second, *record))
        {
            current.insert(*known);
            continue;
        }
        isWhole = isWhole && !progress.isCanceled();
        if (!isWhole)
            continue;
        progress.setCurrentItem(record->path.text(), IQoProgress::itemFilePath);
        const auto digest = KVTagLib::digestOfSoundHead(CQoUtils::getRealPath(record->path));
        if (!digest)
            continue;
        current[key] = {key, record->size, toTicks(record->modifTime), *digest};
        m_changed.insert(key);
    }
    for (const auto& [id, head] : m_heads)
    {
        if (!current.contains(id))
            m_gone.push_back(id);
    }
    m_heads = std::move(current);
    return isWhole;
}

void HeadStore::save()
{
    if (m_gone.empty() && m_changed.empty())
        return;
    std::vector<StoredHead> changed;
    for (const std::string& id : m_changed)
    {
        if (const auto found = m_heads.find(id); found != m_heads.end())
            changed.push_back(found->second);
    }
    HostStore(Session::folder()).changeHeads(m_gone, changed);
    m_gone.clear();
    m_changed.clear();
}
} // namespace qo::host
