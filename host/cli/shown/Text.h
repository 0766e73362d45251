#pragma once

#include <QoKernel/Kernel.h>

#include <string>
#include <string_view>

namespace qo::cli
{
/// "3:51", "1:02:03".
std::string durationText(std::int64_t milliseconds);
/// "0.123", seconds.
std::string secondsText(double seconds);
/// "5.3 MiB".
std::string sizeText(std::int64_t bytes);
/// "2026-01-31T23:59:59.1234567Z"; "" for no time.
std::string isoTime(const FILETIME& time);
/// "2026-01-31 23:59:59", local time; "-" for no time.
std::string localTimeText(const FILETIME& time);
/// "1 file", "2 files".
std::string countText(std::int64_t count, const std::string& noun);

/// How many columns a UTF-8 text takes, about: one a character, two for the wide scripts. Colours
/// count as characters.
std::size_t textWidth(std::string_view text);
/// Cut at the end to that many columns.
std::string cutToWidth(std::string_view text, std::size_t width);
/// The same with "…" at its end, when it is wider.
std::string shortened(std::string_view text, std::size_t width);
/// A path that is wider loses folders at its beginning: "…/Stranger/01 - Letter.mp3". A name that
/// is too wide itself loses its middle.
std::string shortenedPath(std::string_view path, std::size_t width);
/// Filled with blanks, or cut, to exactly that many columns.
std::string padded(std::string_view text, std::size_t width);
/// Words after a start, in lines of at most that many columns; every line but the first one begins
/// with the indent. Ends with a line break. A word is never broken, not even one that is too wide.
std::string
wrapped(const std::string& start, std::string_view words, std::size_t indent, std::size_t columns);
/// A tag's text on one line: control characters become blanks.
std::string oneLine(const CString& text);

/// "file:///a/b%20c": any name as plain ASCII.
std::string fileUri(const std::string& path);
} // namespace qo::cli
