#pragma once

#include "QoColl/Db/Records/Forward.h"
#include "types/Export.h"

/// Files that were converted in their own folders: the player knows them, the collection does not.
/// Each call opens the collection's usual database for itself, so calls may come from any thread.
/// CSQLiteException* goes to the caller.
class QO_API CMpInplaceUtils
{
public:
    /// Stores a record of the file at params.originalPath and returns it with its id. Times, size
    /// and tag are those of the file; a file that is away or has no tag is stored without them. Of
    /// the texts in params only the path has a column of its own; all of them stay in the record's
    /// params.
    static boost::shared_ptr<QoInplaceFileDbItem>
    AddInplaceFile(const QorganizerDef::VelmoraFileParams& params);
    /// Rows can neither be read one by one nor deleted: the first returns false, the second does
    /// nothing.
    static bool GetInplaceFile(int id, boost::shared_ptr<QoInplaceFileDbItem>& item);
    static void DeleteInplaceFile(boost::shared_ptr<QoInplaceFileDbItem>& item);
    /// The last created file comes first.
    static void GetAllInplaceFiles(DbItemArray<QoInplaceFileDbItem>& items);
};
