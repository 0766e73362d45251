#pragma once

#include "types/String.h"

#include <taglib/tstring.h>

/// Texts on their way between TagLib and the house.
namespace KVTagLib
{
/// Longer texts are cut when they are read.
constexpr int maxTextLength = 4096;
constexpr int maxLyricsLength = 1 << 20;

/// Stops at a zero; lone surrogates become U+FFFD.
CString textOf(const TagLib::String& text, int maxLength = maxTextLength);
TagLib::String tagTextOf(const CString& text);

/// Whether nothing but white space stands in it.
bool isBlank(const CString& text);

/// "Rock" for "17", "(17)" or "(17)Rock"; what is no known number stays as it is.
CString genreName(const CString& text);

/// "2001" of "2001-05-03": what stands left of the first '-'.
CString yearPart(const CString& date);

/// "3/12" of "3" and "12"; number alone if it names a total already or total is blank or zero.
CString withTotal(const CString& number, const CString& total);
} // namespace KVTagLib
