#pragma once

#include "KVTagLib/Forward.h"
#include "types/String.h"

namespace KVTagLib
{
/// Writes tags into one file. The caller of the factory deletes it.
class QO_API ITagsWriter
{
public:
    virtual ~ITagsWriter();

    /// Makes the file say what is set in tags and changes nothing else in it. An item that the
    /// file already gives stays as it stands, with all that hangs on it: further artists, the
    /// month and day of a date, the total of a track number. Of a list of artists or genres the
    /// one that a reader gives is replaced; several artists handed over replace them all. A track
    /// number without a total keeps the file's total. An empty text removes the item. The picture
    /// that a reader gives first is replaced if its content differs. When nothing differs the
    /// file is not touched.
    ///
    /// The work is done on a copy that is read again and compared before it takes the file's
    /// place, so a failure leaves the file as it was. Never throws. On false GetError() tells the
    /// cause. A WriteStop of the calling thread ends it early, with the file as it was too.
    virtual bool Write(CTags& tags) = 0;

    /// One sentence on the last failure, without the path; empty after success.
    virtual CString GetError() const = 0;
};
} // namespace KVTagLib
