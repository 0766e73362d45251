#pragma once

#include "KVTagLib/Forward.h"
#include "types/String.h"

namespace KVTagLib
{
/// Reads the tags of one file. Made by CTagsReaderFactory; the caller deletes it. One object must
/// not be used by two threads, but several objects may be.
class QO_API ITagsReader
{
public:
    virtual ~ITagsReader();

    /// Sets in tags what the file has. maxPictures and maxPictureSize (bytes) limit the extraction
    /// of pictures; -1 applies the library's own limits. Throws nothing but std::bad_alloc, never
    /// blocks on a pipe, and does a bounded amount of work whatever the file holds. False when the
    /// file cannot be read or is not of a known format: tags is then unchanged, and GetError()
    /// gives the cause.
    virtual bool Read(CTags& tags, int maxPictures, int maxPictureSize) = 0;

    /// One sentence about the last failure, without the path; "" after success.
    virtual CString GetError() const = 0;
};
} // namespace KVTagLib
