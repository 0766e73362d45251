#pragma once

#include "types/Export.h"
#include "types/String.h"

#include <vector>

namespace qo
{
/// Where the system and the user keep things. Folders are in collection form without a closing
/// backslash and are not created by these calls. Safe from any thread.
class QO_API ISpecialFolders
{
public:
    virtual ~ISpecialFolders();
    virtual CString data() const = 0;  ///< what must last
    virtual CString state() const = 0; ///< logs and the like
    virtual CString cache() const = 0; ///< what can be made again
    /// Those three, in which nothing is the user's music.
    std::vector<CString> ownFolders() const { return {data(), state(), cache()}; }
    virtual CString music() const = 0;
    virtual CString videos() const = 0;
    virtual CString home() const = 0;
    /// The folders that the system's conventions give every user, such as those for documents and
    /// downloads, music and videos among them; whether or not they exist.
    virtual std::vector<CString> userFolders() const = 0;
    virtual CString systemTemp() const = 0;
    /// Folder of the running program.
    virtual CString program() const = 0;
    /// Puts data, state, cache, music and videos below one folder from now on; "" goes back to the
    /// system's.
    virtual void setBase(const CString& folder) = 0;
};
} // namespace qo
