#pragma once

#include "QoColl/Db/Records/QoFileDbItem.h"

#include <cstddef>

namespace qo
{
/// Records, their texts and their files lie anywhere in memory: a walk over them tells the
/// processor in time of those that come next.
class RecordAhead
{
public:
    explicit RecordAhead(const QoFileDbItemArray& items) : m_items(items) {}

    /// The walk is at that index.
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
        __builtin_prefetch(near.path.GetString());
        __builtin_prefetch(near.title.GetString());
    }

private:
    static constexpr int textsAhead = 4;
    static constexpr int recordsAhead = 8;
    static constexpr std::ptrdiff_t cacheLine = 64;

    const QoFileDbItemArray& m_items;
};
} // namespace qo
