#include "QoColl/Db/QoCollDbUtils.h"

#include "QoColl/Db/Records/QoFileDbItem.h"
#include "common/CountedObject.h"
#include "types/CharClass.h"
#include "types/Guid.h"
#include "types/StringArray.h"

#include <algorithm>
#include <new>
#include <utility>

// Searching and sorting arrays of records. takeRows() produces the order that inserting row after
// row would produce, but mostly without a search: it detects rows that are sorted, sorts a few
// ascending runs, and falls back to insertion where only that determines the order.
//
//   "a" (1), "b" (2), "b" (3), "c" (4): inserting 3 finds 2 and goes before it: 1, 3, 2, 4. So
//   sorted rows with at most two equal paths only need each pair swapped (turnPairs).

namespace
{
/// Shorter ranges are scanned from the start. This is part of the contract, since it determines
/// which of several equal records is found.
constexpr int scanBelow = 9;

int comparePaths(const qo::FilePath& path, const QoFileDbItemPtr& item)
{
    return path.CompareNoCase(item->path);
}

/// Searches from low on; on failure index is where the path belongs.
bool scan(const qo::FilePath& path, const QoFileDbItemArray& items, int low, int high, int& index)
{
    for (index = low; index < high; ++index)
    {
        const int order = comparePaths(path, items[index]);
        if (order <= 0)
            return order == 0;
    }
    return false;
}

/// How many records from the start on have the same path.
std::size_t equalRun(const std::vector<QoFileDbItemPtr>& rows, std::size_t start)
{
    std::size_t end = start + 1;
    while (end < rows.size() && comparePaths(rows[start]->path, rows[end]) == 0)
        ++end;
    return end - start;
}

enum class RowOrder
{
    ascending, ///< strictly, no path twice
    repeated,  ///< ascending, with equal neighbours
    mixed
};

/// How rows of a query are ordered.
RowOrder orderOf(const std::vector<QoFileDbItemPtr>& rows)
{
    RowOrder order = RowOrder::ascending;
    for (std::size_t i = 1; i < rows.size(); ++i)
    {
        const int step = comparePaths(rows[i - 1]->path, rows[i]);
        if (step > 0)
            return RowOrder::mixed;
        if (step == 0)
            order = RowOrder::repeated;
    }
    return order;
}

/// Puts the later of two equal paths before the earlier one. With three equal paths the order
/// depends on the records around them: the result is false, and the rows stay as they are.
bool turnPairs(std::vector<QoFileDbItemPtr>& rows)
{
    for (std::size_t i = 0; i < rows.size();)
    {
        const std::size_t run = equalRun(rows, i);
        if (run > 2)
            return false;
        i += run;
    }
    for (std::size_t i = 0; i + 1 < rows.size(); ++i)
        if (comparePaths(rows[i]->path, rows[i + 1]) == 0)
        {
            std::swap(rows[i], rows[i + 1]);
            ++i;
        }
    return true;
}

/// A stable sort for rows that consist of few ascending runs, as scans leave them: one run for the
/// first scan and one for what each later scan found.
void sortByRuns(std::vector<QoFileDbItemPtr>& rows)
{
    const auto isLess = [](const QoFileDbItemPtr& a, const QoFileDbItemPtr& b)
    { return comparePaths(a->path, b) < 0; };
    std::vector<std::ptrdiff_t> ends; // of each run
    for (std::size_t i = 1; i < rows.size(); ++i)
    {
        if (isLess(rows[i], rows[i - 1]))
            ends.push_back(static_cast<std::ptrdiff_t>(i));
    }
    ends.push_back(static_cast<std::ptrdiff_t>(rows.size()));
    while (ends.size() > 1)
    {
        std::vector<std::ptrdiff_t> merged;
        for (std::size_t run = 0; run < ends.size(); run += 2)
        {
            const auto begin = rows.begin() + (run == 0 ? 0 : ends[run - 1]);
            const std::size_t last = std::min(run + 1, ends.size() - 1);
            std::inplace_merge(begin, rows.begin() + ends[run], rows.begin() + ends[last], isLess);
            merged.push_back(ends[last]);
        }
        ends.swap(merged);
    }
}

/// Sorts the rows as insertion one by one would. False, with the rows unchanged, if only insertion
/// itself determines the order.
bool orderRows(std::vector<QoFileDbItemPtr>& rows)
{
    switch (orderOf(rows))
    {
    case RowOrder::ascending:
        return true;
    case RowOrder::repeated:
        return turnPairs(rows);
    case RowOrder::mixed:
        break;
    }
    std::vector<QoFileDbItemPtr> sorted(rows);
    sortByRuns(sorted);
    if (!turnPairs(sorted))
        return false;
    rows.swap(sorted);
    return true;
}
} // namespace

bool CQoCollDbUtils::findQoDbFileItem(const qo::FilePath& path,
                                      const QoFileDbItemArray& items,
                                      int& index)
{
    int low = 0;
    int high = items.GetSize();
    while (high - low >= scanBelow)
    {
        const int middle = (high - low) / 2 + low;
        const int order = comparePaths(path, items[middle]);
        if (order == 0)
        {
            index = middle;
            return true;
        }
        if (order < 0)
            high = middle;
        else
            low = middle + 1;
    }
    return scan(path, items, low, high, index);
}

QoFileDbItemPtr CQoCollDbUtils::findQoDbFileItem(const CString& path,
                                                 const QoFileDbItemArray& items)
{
    int index = 0;
    return findQoDbFileItem(path, items, index) ? items[index] : QoFileDbItemPtr();
}

int CQoCollDbUtils::findQoDbFileItem(int id, const QoFileDbItemArray& items)
{
    int index = 0;
    for (const QoFileDbItemPtr& item : items)
    {
        if (item->id == id)
            return index;
        ++index;
    }
    return -1;
}

int CQoCollDbUtils::addQoDbFileItem(QoFileDbItemPtr& item, QoFileDbItemArray& items, bool unique)
{
    int index = 0;
    if (!findQoDbFileItem(item->path, items, index) || !unique)
        items.InsertAt(index, item);
    return index;
}

int CQoCollDbUtils::addQoDbFileItem(const CString& path, QoFileDbItemArray& items, bool unique)
{
    int index = 0;
    if (findQoDbFileItem(path, items, index) && unique)
        return -1;
    try
    {
        const auto item = qo::makeCounted<QoFileDbItem>();
        item->path = path;
        items.InsertAt(index, item);
        return index;
    }
    catch (const std::bad_alloc&)
    {
        return -1;
    }
}

void CQoCollDbUtils::takeRows(std::vector<QoFileDbItemPtr>& rows, QoFileDbItemArray& items)
{
    items.RemoveAll();
    const bool ordered = orderRows(rows);
    for (QoFileDbItemPtr& row : rows)
        if (ordered)
            items.Add(row);
        else
            addQoDbFileItem(row, items, false);
    rows.clear();
}

std::int64_t CQoCollDbUtils::FILETIMEToInt64(FILETIME time)
{
    return qo::toTicks(time);
}

void CQoCollDbUtils::Int64ToFILETIME(std::int64_t value, FILETIME& time)
{
    time = qo::fromTicks(value);
}

bool CQoCollDbUtils::IsNullFILETIME(const FILETIME& time)
{
    return time.dwLowDateTime == 0 && time.dwHighDateTime == 0;
}

void CQoCollDbUtils::SetNullFILETIME(FILETIME& time)
{
    time = FILETIME();
}

int CQoCollDbUtils::compareFILETIMEs(const FILETIME& a, const FILETIME& b)
{
    const std::int64_t first = qo::toTicks(a);
    const std::int64_t second = qo::toTicks(b);
    return (first > second) - (first < second);
}

bool CQoCollDbUtils::FILETIMEsAreEqual(const FILETIME& a, const FILETIME& b)
{
    return compareFILETIMEs(a, b) == 0;
}

CString CQoCollDbUtils::GUIDToString(const GUID& id)
{
    return qo::guidToText(id);
}

void CQoCollDbUtils::GUIDFromString(const CString& text, GUID& id)
{
    qo::guidFromText(text, id);
}

void CQoCollDbUtils::filesToStrPaths(const QoFileDbItemArray& items, CStringArray& paths)
{
    for (const QoFileDbItemPtr& item : items)
        paths.Add(item->path);
}

void CQoCollDbUtils::copyTags(QoFileDbItemPtr source, QoFileDbItemPtr target)
{
    target->artist = source->artist;
    target->album = source->album;
    target->title = source->title;
    target->genre = source->genre;
    target->trackNumber = source->trackNumber;
    target->year = source->year;
    target->lyrics = source->lyrics;
    target->lyricsLoaded = source->lyricsLoaded;
    target->picturePath = source->picturePath;
    target->size = source->size;
    target->bitrate = source->bitrate;
}
