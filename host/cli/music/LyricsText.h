#pragma once

#include <QoKernel/Kernel.h>

#include <string>

namespace qo::cli
{
/// Reads a text in UTF-16 or UTF-8, and in Latin-1 if it is neither. Returns what is wrong with the
/// file, as the end of a sentence that begins with its path; "" for success.
std::string readLyricsFile(const CString& path, CString& text);

/// The text with line feeds as line ends and, for a terminal, without control characters.
std::string shownLyrics(const CString& lyrics);
} // namespace qo::cli
