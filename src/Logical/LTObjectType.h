#pragma once

/// The kinds of logical objects, one bit each so that they combine into masks.
class CLTObjectType
{
public:
    enum EType : int
    {
        Album = 1,
        Artist = 2,
        Genre = 4,
        Lyrics = 8,
        Picture = 16,
        Track = 32
    };
};
