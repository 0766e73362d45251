#pragma once

#include "types/String.h"

#include <string>
#include <vector>

/// Texts whose bytes were read as Latin-1 or windows-1252 while they are Cyrillic, Greek, Chinese,
/// Japanese or Korean: "Êèíî" has the bytes CA E8 ED EE, which windows-1251 reads as "Кино". May be
/// called from any thread.
namespace qo
{
/// Whether the text can be one of these: it has letters beyond ASCII, and windows-1252 has them.
QO_API bool mayBeMisread(const CString& text);

struct MisreadGuess
{
    std::string charset;    ///< "" where none is sure enough
    bool isInDoubt = false; ///< there is none, but some encoding would make sense
};

/// The encoding that the texts were written in. Texts of Latin letters, such as "Motörhead" and
/// "Björk Guðmundsdóttir", have none. All texts of one source should be given together: the more
/// there are, the surer it is. A dozen letters are often enough for Cyrillic and Greek, and about
/// ten signs for the others.
QO_API MisreadGuess misreadCharsetOf(const std::vector<CString>& texts);

/// The text as that encoding reads its bytes; "" where these make no sense in it. That includes
/// words of Latin letters with few others among them, "Motцrhead", as they come of a text that was
/// read right. An encoding of Latin letters, windows-1250 say, is taken at its word.
QO_API CString rereadText(const CString& text, const std::string& charset);
} // namespace qo
