#pragma once

#include "QoColl/Db/Records/Forward.h"
#include "QoColl/Db/Records/ItemSource.h"
#include "types/Export.h"
#include "types/String.h"

/// Sessions of recording. Each call opens the collection's usual database for itself, so calls may
/// come from any thread. CSQLiteException* goes to the caller.
class QO_API CMpSessionUtils
{
public:
    /// Stores a session that starts now; returns its id.
    static int startSession(eItemSource source, const CString& name);
    /// Stores the present time as the end of the session. An unknown id changes nothing.
    static void endSession(int id);
    /// See CQoCollDb::getAllSessions().
    static void getAllSessions(CArray<QoSessionQueryItem>& items, int limitPerSource);
    /// False, with item unchanged, if there is none.
    static bool getSession(int id, boost::shared_ptr<QoSessionDbItem>& item);
    /// Deletes the sessions in which no file was recorded, each in a transaction of its own.
    static void clearEmptySessions();
};
