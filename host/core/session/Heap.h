#pragma once

namespace qo::host
{
/// Whether a process may end without giving its memory back block by block, which takes a tenth of
/// what the load of a collection does. Not under sanitizers, which look for what was forgotten, nor
/// where the end writes down what was covered.
bool mayEndAtOnce();
} // namespace qo::host
