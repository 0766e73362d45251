#pragma once

#include "types/FilePath.h"
#include "types/Map.h"

namespace qo
{
/// The path of each record by its id. Ids are mostly consecutive, so 32 neighbours share a page,
/// which takes much less memory than a map entry for each.
class PathsById
{
public:
    /// Null for an unknown id; valid until the next change.
    const FilePath* find(int id) const
    {
        const Page* const page = m_pages.PLookup(pageOf(id));
        const FilePath* const path = page ? &page->paths[placeIn(id)] : nullptr;
        return path && !path->IsEmpty() ? path : nullptr;
    }
    void set(int id, const FilePath& path) { m_pages[pageOf(id)].paths[placeIn(id)] = path; }
    void remove(int id)
    {
        if (find(id))
            m_pages[pageOf(id)].paths[placeIn(id)] = FilePath();
    }
    void clear() { m_pages.RemoveAll(); }

private:
    static constexpr int pageBits = 5;
    static constexpr int pageSize = 1 << pageBits;

    struct Page
    {
        FilePath paths[pageSize];
    };

    static int pageOf(int id) noexcept { return id >> pageBits; }
    static int placeIn(int id) noexcept { return id & (pageSize - 1); }

    CMap<int, Page> m_pages;
};
} // namespace qo
