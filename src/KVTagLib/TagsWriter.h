#pragma once

#include "KVTagLib/Forward.h"
#include "types/String.h"

namespace KVTagLib
{
/// Writes tags into one file. Made by CTagsWriterFactory; the caller deletes it.
class QO_API ITagsWriter
{
public:
    virtual ~ITagsWriter();

    /// Makes the file say what is set in tags and changes nothing else in it. An item that the
    /// file already has in this form stays untouched, with all that belongs to it: further artists,
    /// the month and day of a date, the total of a track number. In a list of artists or genres the
    /// one that a reader gives is replaced; several wanted artists replace them all. A track
    /// number without a total keeps the file's total. An empty text removes the item. A picture
    /// replaces the first front cover, or is added as one, unless a reader gives that very picture
    /// first. When nothing differs the file is not touched.
    ///
    /// The work is done on a copy that is read again and compared before it takes the file's
    /// place, so a failure leaves the file as it was. Throws nothing but std::bad_alloc. On false
    /// GetError() gives the cause. A WriteStop of the calling thread ends it early, also without a
    /// change.
    virtual bool Write(CTags& tags) = 0;

    /// Whether the last Write() changed the file: false after a failure, and where the file said
    /// already what it should.
    virtual bool HasChanged() const = 0;

    /// One sentence about the last failure, without the path; "" after success.
    virtual CString GetError() const = 0;
};
} // namespace KVTagLib
