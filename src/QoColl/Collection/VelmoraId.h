#pragma once

#include "types/String.h"

namespace qo
{
/// A new identity for a file: the local time to the millisecond, with "_1", "_2" ... behind it
/// while the time stays the same. Unlike any other of this process. Safe from any thread.
QO_API CString makeVelmoraId();
} // namespace qo
