#include "Database/src/DbFacade/SQLiteThreads.h"

#include <sqlite3.h>

namespace qo
{
void useUnsharedConnections()
{
    sqlite3_config(SQLITE_CONFIG_MULTITHREAD);
}
} // namespace qo
