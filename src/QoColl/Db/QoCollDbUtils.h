#pragma once

#include "QoColl/Db/Forward.h"
#include "types/Export.h"
#include "types/FileTime.h"
#include "types/Forward.h"

#include <cstdint>
#include <vector>

/// Free-standing helpers around the file record. An array of records is sorted by path without
/// regard to case (see qo::compareNoCase); equal paths may stand in it side by side.
class QO_API CQoCollDbUtils
{
public:
    /// True with the index of a record of that path, otherwise false with the index where it would
    /// be inserted.
    static bool findQoDbFileItem(const CString& path, const QoFileDbItemArray& items, int& index);
    /// An empty handle if there is none.
    static QoFileDbItemPtr findQoDbFileItem(const CString& path, const QoFileDbItemArray& items);
    /// Linear; -1 if there is none.
    static int findQoDbFileItem(int id, const QoFileDbItemArray& items);

    /// Inserts at the place of its path, ahead of the equal record that the search meets. With
    /// unique an existing path is left as it stands and its index is returned.
    static int addQoDbFileItem(QoFileDbItemPtr& item, QoFileDbItemArray& items, bool unique);
    /// The same with a new default record of that path; -1 if it exists and unique is set, or if
    /// the record cannot be allocated.
    static int addQoDbFileItem(const CString& path, QoFileDbItemArray& items, bool unique);
    /// Empties the items and gives them the rows in the order that adding them one after the other
    /// with addQoDbFileItem(row, items, false) gives; the rows are moved from. Rows that come
    /// sorted cost one comparison each.
    static void takeRows(std::vector<QoFileDbItemPtr>& rows, QoFileDbItemArray& items);

    static std::int64_t FILETIMEToInt64(FILETIME time);
    static void Int64ToFILETIME(std::int64_t value, FILETIME& time);
    static bool IsNullFILETIME(const FILETIME& time);
    static void SetNullFILETIME(FILETIME& time);
    /// -1, 0 or 1 by the signed 64-bit values.
    static int compareFILETIMEs(const FILETIME& a, const FILETIME& b);
    static bool FILETIMEsAreEqual(const FILETIME& a, const FILETIME& b);

    /// Lower case, without braces.
    static CString GUIDToString(const GUID& id);
    /// A text of another form gives the null id.
    static void GUIDFromString(const CString& text, GUID& id);

    /// Appends the path of each record, in order.
    static void filesToStrPaths(const QoFileDbItemArray& items, CStringArray& paths);

    /// Copies the tags with lyrics, picture path, size and bitrate; the duration stays.
    static void copyTags(QoFileDbItemPtr source, QoFileDbItemPtr target);
};
