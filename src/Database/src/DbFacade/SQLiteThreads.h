#pragma once

#include "types/Export.h"

namespace qo
{
/// For a program in which no connection to a database, its own ones included, is ever used by two
/// threads at a time: SQLite then takes no lock for each column of each row. To be called first in
/// main(); without effect once SQLite has been started.
QO_API void useUnsharedConnections();
} // namespace qo
