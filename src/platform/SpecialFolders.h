#pragma once

#include "types/Export.h"
#include "types/String.h"

#include <vector>

namespace qo
{
/// The folders in which the system and the user keep things. They are in collection form without a
/// closing backslash, and are not created here. May be called from any thread.
class QO_API ISpecialFolders
{
public:
    virtual ~ISpecialFolders();
    virtual CString data() const = 0;  ///< what must be kept
    virtual CString state() const = 0; ///< logs and the like
    virtual CString cache() const = 0; ///< what can be made again
    /// These three, which never contain music of the user.
    std::vector<CString> ownFolders() const { return {data(), state(), cache()}; }
    virtual CString music() const = 0;
    virtual CString videos() const = 0;
    virtual CString home() const = 0;
    /// The folders that every user has by convention, such as those for documents and downloads,
    /// music and videos included, whether or not they exist.
    virtual std::vector<CString> userFolders() const = 0;
    virtual CString systemTemp() const = 0;
    /// The folder of the running program.
    virtual CString program() const = 0;
    /// Puts data, state, cache, music and videos below one folder from now on; "" returns to the
    /// system's folders.
    virtual void setBase(const CString& folder) = 0;
};
} // namespace qo
