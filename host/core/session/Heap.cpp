#include "core/session/Heap.h"

#ifdef QO_MIMALLOC
#include <mimalloc.h>
#endif

namespace qo::host
{
void useLargePages()
{
#ifdef QO_MIMALLOC
    mi_option_enable(mi_option_large_os_pages);
    // Also for the first blocks of each thread: those of the kernel's thread hold a third of a big
    // collection.
    mi_option_set(mi_option_eager_commit_delay, 0);
#endif
}

bool mayEndAtOnce()
{
#ifdef QO_ENDS_AT_ONCE
    return true;
#else
    return false;
#endif
}
} // namespace qo::host
