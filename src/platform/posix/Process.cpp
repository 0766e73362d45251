#include "platform/Process.h"

#include <malloc.h>

namespace qo
{
void useOneHeap()
{
    ::mallopt(M_ARENA_MAX, 1);
}
} // namespace qo
