#pragma once

#include <string>
#include <string_view>

namespace qo::host
{
/// Texts as a search compares them: without case, accents and the differences between forms of one
/// letter. "Bj\u00F6rk", "BJORK" and "bjork" are one text, and so are "Stra\u00DFe" and "strasse".
/// Accents are dropped where they only change a letter, as in Latin, Greek and Cyrillic; signs
/// that make another sound, as in Indian and Japanese scripts, stay. Characters beyond the basic
/// plane stay as they are. For one thread.
std::u16string folded(std::u16string_view text);
/// The same at the end of a text.
void appendFolded(std::u16string_view text, std::u16string& result);
} // namespace qo::host
