#pragma once

#include "core/plan/ReorganizePlan.h"

#include <QoKernel/Kernel.h>

#include <string>

namespace qo::host
{
/// The one file or folder that is being moved, noted in a file from before the disk's part until
/// the collection is saved: what a crash leaves behind is found by it. Not for several threads at
/// once.
class UnfinishedMove
{
public:
    /// Folder is the collection's own. Nothing is written yet.
    explicit UnfinishedMove(const CString& folder);
    /// Ends what was begun.
    ~UnfinishedMove();
    UnfinishedMove(const UnfinishedMove&) = delete;
    UnfinishedMove& operator=(const UnfinishedMove&) = delete;

    /// Paths in collection form; staging is the name of the hidden folder of a copy. Throws
    /// HostError.
    void begin(const CString& from, const CString& to, const std::string& staging);

    // What an earlier process left behind.

    static bool wasLeft(const CString& folder);
    struct Left
    {
        CString from;
        CString to;
        std::string staging;
        FileMark mark; ///< of the source when it began
    };
    /// Reads it; false when there is none, or none that can be understood.
    static bool read(const CString& folder, Left& left);
    static void forget(const CString& folder);

private:
    CString m_folder;
    bool m_isBegun = false;
};
} // namespace qo::host
