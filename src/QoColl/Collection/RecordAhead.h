#pragma once

#include "QoColl/Db/Records/QoFileDbItem.h"

#include <cstddef>

namespace qo
{
/// Asks the processor to load records before a walk reaches them: records, their texts and their
/// files are scattered in memory, and waiting for each would take most of the time of a load.
class RecordAhead
{
public:
    explicit RecordAhead(const QoFileDbItemArray& items) : m_items(items) {}

    /// To be called when the walk is at that index.
    void announce(int index) const
    {
        if (index < 0 || index + recordsAhead >= m_items.GetSize())
            return;
        const auto* const record =
            reinterpret_cast<const char*>(m_items[index + recordsAhead].get());
        __builtin_prefetch(record);
        __builtin_prefetch(record + cacheLine);
        __builtin_prefetch(record + 2 * cacheLine);
        const QoFileDbItem& near = *m_items[index + textsAhead];
        __builtin_prefetch(near.path.name().GetString());
        __builtin_prefetch(near.title.GetString());
    }

private:
    static constexpr int textsAhead = 4;
    static constexpr int recordsAhead = 8;
    static constexpr std::ptrdiff_t cacheLine = 64;

    const QoFileDbItemArray& m_items;
};
} // namespace qo
