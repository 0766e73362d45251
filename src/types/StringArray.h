#pragma once

#include "types/Array.h"
#include "types/String.h"

/// A list of texts.
class QO_API CStringArray : public CArray<CString>
{
public:
    /// The elements with the separator between them; "" for an empty list. {"a", "", "b"} gives
    /// "a,,b".
    CString join(const char16_t* separator) const;

    /// The parts of the text between the separators, in order. An empty text gives no part, and a
    /// separator at the end gives no empty part after it: "a,,b," gives {"a", "", "b"}.
    static CStringArray split(const CString& text, char16_t separator);
};
