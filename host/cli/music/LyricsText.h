#pragma once

#include <QoKernel/Kernel.h>

#include <string>

namespace qo::cli
{
/// The text of a file in UTF-16 or UTF-8, else in the Latin letters of old programs. What is wrong
/// with the file otherwise, as the end of a sentence that its path begins.
std::string readLyricsFile(const CString& path, CString& text);

/// With the line ends of this system; for a terminal without control characters.
std::string shownLyrics(const CString& lyrics, bool forTerminal);
} // namespace qo::cli
