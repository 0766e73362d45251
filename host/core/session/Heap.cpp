#include "core/session/Heap.h"

namespace qo::host
{
bool mayEndAtOnce()
{
#ifdef QO_ENDS_AT_ONCE
    return true;
#else
    return false;
#endif
}
} // namespace qo::host
