#pragma once

// The whole facade. A caller that needs one class alone includes that class's header.
#include "Database/src/DbFacade/SQLiteDB.h"
#include "Database/src/DbFacade/SQLiteDbTransaction.h"
#include "Database/src/DbFacade/SQLiteException.h"
#include "Database/src/DbFacade/SQLiteQueryResult.h"
#include "Database/src/DbFacade/SQLiteStatement.h"
