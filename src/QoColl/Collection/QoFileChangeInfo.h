#pragma once

#include "QoColl/Db/Forward.h"
#include "platform/FileSystem.h"
#include "types/String.h"

#include <cstdint>
#include <optional>

/// One change that a host wants in a loaded collection.
struct CQoFileChangeInfo
{
    enum EAction : std::uint8_t
    {
        noAction = 0,
        addVelmoraFile = 1, ///< adds a file with the prepared record m_dbItem
        scan = 2,
        move = 3,
        remove = 4
    };
    /// Whether a scan marks the files that it finds as imported.
    enum ESetImportedAction : std::uint8_t
    {
        setImported = 0,
        clearImported = 1,
        setImportedIfNew = 2
    };
    enum EScanFileType : std::uint8_t
    {
        ordinaryFile = 0,
        importedFile = 1 ///< its parameters get the media type of imported files
    };

    EAction m_action = noAction;
    CString m_path;
    ESetImportedAction m_importedAction = setImported;
    EScanFileType m_scanFileType = ordinaryFile;
    CString m_newPath;        ///< target of a move
    bool m_rescan = false;    ///< read the file again after the move
    QoFileDbItemPtr m_dbItem; ///< a prepared record, or null
    /// A move or removal does not remove empty folders from the disk: for changes that happened
    /// there already.
    bool m_keepEmptyDirs = false;
    /// What whoever walked the folder saw of the file. Spares the second look; a file that has gone
    /// since is noticed when it is opened.
    std::optional<qo::FileInfo> m_seen;
};
