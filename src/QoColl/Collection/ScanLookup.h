#pragma once

#include "QoColl/Collection/Forward.h"
#include "QoColl/Collection/RecordAhead.h"
#include "QoColl/Db/QoCollDbUtils.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "platform/FileSystem.h"

namespace qo
{
/// A file that the walk found.
struct FoundFile
{
    FilePath path;
    FileInfo info; ///< as the walk saw it
};

/// Does what CQoCollDbUtils::findQoDbFileItem does, but quickly for the files of a walk: most of
/// them follow the one before, where comparing with the neighbours is enough. In a sorted array a
/// record between a smaller and a larger neighbour is the only equal one, and a gap between them is
/// the only position for a new one. Not for several threads at once.
class ScanLookup
{
public:
    explicit ScanLookup(const QoFileDbItemArray& items) : m_items(items), m_ahead(items) {}

    /// True with the index of the record of that path, else false with the index where it belongs.
    bool find(const FilePath& path, int& index)
    {
        m_ahead.announce(m_next);
        const bool found =
            nearby(path, index) || CQoCollDbUtils::findQoDbFileItem(path, m_items, index);
        const bool isNew = m_gap;
        m_gap = false;
        m_next = index + 1;
        return found && !isNew;
    }

private:
    int compareAt(const FilePath& path, int index) const
    {
        if (index < 0)
            return 1;
        return index >= m_items.GetSize() ? -1 : path.CompareNoCase(m_items[index]->path);
    }
    /// True if the position is next to the last one; m_gap then says that no record is there.
    bool nearby(const FilePath& path, int& index)
    {
        if (m_next < 0 || m_next > m_items.GetSize() || compareAt(path, m_next - 1) <= 0)
            return false;
        const int order = compareAt(path, m_next);
        if (order > 0 || (order == 0 && compareAt(path, m_next + 1) >= 0))
            return false;
        index = m_next;
        m_gap = order < 0;
        return true;
    }

    const QoFileDbItemArray& m_items;
    RecordAhead m_ahead;
    int m_next = -1; ///< index at which the next file of the walk is expected
    bool m_gap = false;
};
} // namespace qo
