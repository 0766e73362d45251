#pragma once

#include "QoColl/Plugins/Forward.h"
#include "types/Export.h"
#include "types/String.h"

#include <cstdint>

/// A request to a plug-in that is under way. The kernel asks for the state every 42 milliseconds
/// and calls Poll() in between, always on the thread that began the request; the plug-in may work
/// on threads of its own meanwhile. No call may block for long: a request that is released while it
/// runs has been cancelled, and its destructor gives up what it can and waits for the rest. A
/// request has a time limit of its own: the kernel waits until it ends or the user cancels.
class QO_API IPluginOperation
{
public:
    /// Any other number counts as failed.
    enum EState : int
    {
        OS_Created = 0,
        OS_Waiting = 1,
        OS_Running = 2,
        OS_Finished = 3,
        OS_Failed = 4
    };

    virtual ~IPluginOperation();
    /// For work that needs the caller's thread; most plug-ins do nothing here. A request that is
    /// quick should be finished when it is handed over: it then costs a single wait.
    virtual void Poll() {}
    virtual int GetState() = 0;
    /// How much of the total is done, in any unit; false, or a total of 0, when that is unknown.
    virtual bool GetProgress(std::int64_t& done, std::int64_t& total) = 0;
    /// Appends what the request has given so far.
    virtual void GetResults(PluginResultArray& results) = 0;
    /// The cause of a failure, for people; must not hold a password. CheckCredentials() says
    /// "Account expired" and "Wrong server path" in exactly these words.
    virtual CString GetErrorText() = 0;
};
