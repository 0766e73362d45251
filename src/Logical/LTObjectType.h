#pragma once

#include "types/Export.h"

#include <cstdint>

/// The kinds of logical objects, one bit each, so that several can be combined in a mask.
class QO_API CLTObjectType
{
public:
    enum EType : std::uint8_t
    {
        Album = 1,
        Artist = 2,
        Genre = 4,
        Lyrics = 8,
        Picture = 16,
        Track = 32
    };
    struct TypeInfo
    {
        EType type;
        const char16_t* name;
    };
    static constexpr int typesCount = 6;
    static const TypeInfo m_typesInfo[typesCount];

    static int getTypesCount() noexcept { return typesCount; }
    /// The index is not checked.
    static EType getType(int index) noexcept { return m_typesInfo[index].type; }
    static const char16_t* getTypeName(int index) noexcept { return m_typesInfo[index].name; }
    /// Null for a combination of types.
    static const char16_t* getTypeName(EType type) noexcept;
};
