#pragma once

#include <QoKernel/Kernel.h>

#include <string>

namespace qo::host
{
/// One name or value as a line of the settings file can hold it.
std::string escapeSetting(const CString& text);
/// False for an escape that the other function does not make, and for bytes that are no UTF-8.
bool unescapeSetting(std::string_view line, CString& text);
} // namespace qo::host
