#pragma once

#include "QoColl/Db/Forward.h"
#include "types/Export.h"
#include "types/FileTime.h"
#include "types/Forward.h"

#include <cstdint>
#include <vector>

/// Helpers around the file record. An array of records is sorted by path without regard to case
/// (see qo::compareNoCase); records with equal paths may stand side by side in it.
class QO_API CQoCollDbUtils
{
public:
    /// Binary search: true with the index of a record of that path, else false with the index where
    /// one must be inserted.
    static bool
    findQoDbFileItem(const qo::FilePath& path, const QoFileDbItemArray& items, int& index);
    /// The record of that path; an empty handle if there is none.
    static QoFileDbItemPtr findQoDbFileItem(const CString& path, const QoFileDbItemArray& items);
    /// The index of the record with that id, by a linear search; -1 if there is none.
    static int findQoDbFileItem(int id, const QoFileDbItemArray& items);

    /// Inserts the record by its path, before the equal record that the search finds, and returns
    /// its index. With unique an existing path is not inserted again, and the index is that of the
    /// existing record.
    static int addQoDbFileItem(QoFileDbItemPtr& item, QoFileDbItemArray& items, bool unique);
    /// The same with a new record of that path. -1 if the path exists and unique is set, or if
    /// memory runs out.
    static int addQoDbFileItem(const CString& path, QoFileDbItemArray& items, bool unique);
    /// Replaces items by the rows, in the order that addQoDbFileItem(row, items, false) for each of
    /// them would give; rows is empty afterwards. Rows that are sorted cost one comparison each.
    static void takeRows(std::vector<QoFileDbItemPtr>& rows, QoFileDbItemArray& items);

    static std::int64_t FILETIMEToInt64(FILETIME time);
    static void Int64ToFILETIME(std::int64_t value, FILETIME& time);
    static bool IsNullFILETIME(const FILETIME& time);
    static void SetNullFILETIME(FILETIME& time);
    /// -1, 0 or 1, as signed 64-bit values.
    static int compareFILETIMEs(const FILETIME& a, const FILETIME& b);
    static bool FILETIMEsAreEqual(const FILETIME& a, const FILETIME& b);

    /// See qo::guidToText: lower case, without braces.
    static CString GUIDToString(const GUID& id);
    /// Any other text gives the null id.
    static void GUIDFromString(const CString& text, GUID& id);

    /// Appends the path of each record, in order.
    static void filesToStrPaths(const QoFileDbItemArray& items, CStringArray& paths);

    /// Copies the tags, lyrics, picture path, size and bit rate, but not the duration.
    static void copyTags(QoFileDbItemPtr source, QoFileDbItemPtr target);
};
