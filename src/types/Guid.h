#pragma once

#include "types/Export.h"
#include "types/Forward.h"

#include <cstdint>

/// A 128-bit id; all zero is the null id, which no object has.
struct GUID
{
    std::uint32_t Data1 = 0;
    std::uint16_t Data2 = 0;
    std::uint16_t Data3 = 0;
    std::uint8_t Data4[8] = {};

    bool operator==(const GUID&) const noexcept = default;
};

namespace qo
{
/// The text form, in lower case and without braces: "00112233-4455-6677-8899-aabbccddeeff".
QO_API CString guidToText(const GUID& id);

/// Reads that form in upper or lower case; for any other text false and the null id.
QO_API bool guidFromText(const CString& text, GUID& id);
} // namespace qo
