#pragma once

namespace qo::host
{
/// Lets the heap grow into large pages where the system has them: a big collection is walked in no
/// order that the processor's table of small pages could keep up with. For a program that means to
/// hold one; to be called first in main(). Does nothing in a program whose heap is not mimalloc's.
void useLargePages();
} // namespace qo::host
