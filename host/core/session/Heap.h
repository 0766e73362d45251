#pragma once

namespace qo::host
{
/// Lets the heap use large pages where the system has them. A big collection is walked in an order
/// that is random in memory, and with small pages the processor would often have to look up where a
/// page lies. Call it first in main(), in a program that holds a collection. Does nothing when the
/// heap is not mimalloc's.
void useLargePages();

/// Whether a process may end without giving its memory back block by block, which takes a tenth of
/// what the load of a collection does. Not under sanitizers, which look for what was forgotten, nor
/// where the end writes down what was covered.
bool mayEndAtOnce();
} // namespace qo::host
