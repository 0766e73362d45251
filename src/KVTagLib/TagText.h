#pragma once

#include "types/String.h"

#include <taglib/tstring.h>

/// Converts texts between TagLib and the kernel, and parses the few that have a structure.
namespace KVTagLib
{
/// Longer texts are cut when they are read, which bounds what one file can put into the database.
constexpr int maxTextLength = 4096;
constexpr int maxLyricsLength = 1 << 20;

/// The text up to a zero; lone surrogates become U+FFFD, so that every text can be stored as UTF-8.
CString textOf(const TagLib::String& text, int maxLength = maxTextLength);
TagLib::String tagTextOf(const CString& text);
/// The text of bytes that should be UTF-8. Other bytes are read as what they seem to be
/// (types/Charset.h).
TagLib::String textOfBytes(const TagLib::ByteVector& bytes);

/// Whether there is nothing but white space in it.
bool isBlank(const CString& text);

/// "Rock" for "17", "(17)" or "(17)Rock", the ways of old ID3 tags to name a genre; any other text
/// stays as it is.
CString genreName(const CString& text);

/// "2001" for "2001-05-03": the part left of the first '-'.
CString yearPart(const CString& date);

/// "3/12" for "3" and "12"; only the number if it has a total already or total is blank or zero.
CString withTotal(const CString& number, const CString& total);
} // namespace KVTagLib
