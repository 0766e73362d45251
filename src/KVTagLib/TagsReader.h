#pragma once

#include "KVTagLib/Forward.h"
#include "types/String.h"

namespace KVTagLib
{
/// Reads the tags of one file. The caller of the factory deletes it.
class QO_API ITagsReader
{
public:
    virtual ~ITagsReader();

    /// Fills in what the file says. maxPictures and maxPictureSize (bytes) bound the extraction of
    /// pictures, -1 leaves it to the house's own bounds. Never throws and never blocks on a pipe;
    /// the work is bounded whatever the file holds. False when the file cannot be read or is not
    /// of a known format: tags is then unchanged and GetError() tells the cause.
    virtual bool Read(CTags& tags, int maxPictures, int maxPictureSize) = 0;

    /// One sentence on the last failure, without the path; empty after success.
    virtual CString GetError() const = 0;
};
} // namespace KVTagLib
