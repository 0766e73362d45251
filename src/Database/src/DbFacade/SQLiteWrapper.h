#pragma once

// All classes of the facade. A caller that needs only one class includes that header.
#include "Database/src/DbFacade/SQLiteDB.h"
#include "Database/src/DbFacade/SQLiteDbTransaction.h"
#include "Database/src/DbFacade/SQLiteException.h"
#include "Database/src/DbFacade/SQLiteQueryResult.h"
#include "Database/src/DbFacade/SQLiteStatement.h"
