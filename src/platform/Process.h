#pragma once

#include "common/types/Export.h"

namespace qo
{
/// For a program whose heavy work runs on one thread at a time: all threads share one heap, which
/// spares the system calls by which a second one grows, and which lies in large pages where the
/// system has them. It keeps its memory to the end. To be called first in main().
QO_API void useOneHeap();
} // namespace qo
