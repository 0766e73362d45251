#pragma once

#include "types/String.h"

namespace qo
{
/// A new lasting id (FT_VELMORA_ID) for a file: the local time to the millisecond, followed by
/// "_1", "_2" and so on while the time is the same, such as "20240131_235959_123_1". Unique in this
/// process. May be called from any thread.
QO_API CString makeVelmoraId();
} // namespace qo
