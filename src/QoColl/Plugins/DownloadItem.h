#pragma once

#include "types/Export.h"
#include "types/String.h"

#include <string>

/// One file that is fetched to a local path in the background while its holder asks for the state.
/// Handles are boost::shared_ptr; releasing the last one cancels a fetch that runs and waits for
/// its end. Every call may come from any thread.
class QO_API IDownloadItem
{
public:
    /// The value 1 is not set by the kernel; holders take it for running.
    enum EState : int
    {
        DS_Idle = 0,
        DS_Running = 2,
        DS_Done = 3,    ///< the target is complete
        DS_Failed = 4,  ///< the reason is in the log
        DS_Canceled = 5 ///< what the target holds is of no use
    };

    virtual ~IDownloadItem();
    /// Begins the fetch, from the start of the file; nothing while one runs. When it returns, the
    /// state is no longer DS_Idle.
    virtual void Start() = 0;
    /// Holds a fetch that runs, and lets it go on; false where that is not offered.
    virtual bool Pause() = 0;
    virtual bool Resume() = 0;
    /// Ends a fetch that runs and waits for its thread; the state is DS_Canceled then, even if the
    /// last byte had come. Nothing before Start() and after the end. From within the fetch itself
    /// it does not wait.
    virtual void Cancel() = 0;
    virtual void Restart() = 0;
    /// The position and the size in bytes, each its lowest 32 bits only; total is 0 while the size
    /// is unknown.
    virtual void GetProgress(int& done, int& total) = 0;
    virtual int GetState() = 0;
    /// The name of the source, such as "share", also in UTF-8; and what it offers, such as
    /// "share/*".
    virtual CString GetSourceName() = 0;
    virtual std::string GetSourceNameUtf8() = 0;
    virtual std::string GetTypeText() = 0;
    virtual CString GetTargetPath() = 0;
};
