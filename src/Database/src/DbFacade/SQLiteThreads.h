#pragma once

#include "types/Export.h"

namespace qo
{
/// For programs in which no database connection is ever used by two threads at a time: SQLite then
/// takes no lock for each column of each row. To be called first in main(); it has no effect after
/// SQLite was used.
QO_API void useUnsharedConnections();
} // namespace qo
