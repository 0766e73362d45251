#pragma once

#include "types/Map.h"

/// The type of a root folder: what in it counts as music.
struct CQoPathInfo
{
    enum EType : int
    {
        allIsMusic = 1, ///< audio and video files
        nothingIsMusic = 2,
        audioIsMusic = 3 ///< audio files only
    };

    static constexpr bool isType(int number)
    {
        return number >= allIsMusic && number <= audioIsMusic;
    }
    /// audioIsMusic for a number that is no type.
    static constexpr EType toType(int number)
    {
        return isType(number) ? static_cast<EType>(number) : audioIsMusic;
    }
};

/// The types of root folders by path. Keys are compared exactly, so they must have the form that
/// CQoCollPath::toString() gives.
class CQoPathsInfoMap : public CMap<CString, CQoPathInfo::EType>
{
public:
    /// audioIsMusic for a path without an entry.
    CQoPathInfo::EType getType(const CString& path) const
    {
        CQoPathInfo::EType type{};
        Lookup(path, type);
        return type;
    }
    /// Whether there is an entry; without one the kind is audioIsMusic.
    bool Lookup(const CString& path, CQoPathInfo::EType& type) const
    {
        const CQoPathInfo::EType* const found = PLookup(path);
        type = found ? *found : CQoPathInfo::audioIsMusic;
        return found != nullptr;
    }
    /// The kind under the path, audioIsMusic from now on if there was none.
    CQoPathInfo::EType& operator[](const CString& path)
    {
        CQoPathInfo::EType type{};
        if (!Lookup(path, type))
            SetAt(path, type);
        return CMap::operator[](path);
    }
};
