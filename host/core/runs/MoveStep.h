#pragma once

#include "core/plan/ReorganizePlan.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace qo::host
{
/// A file of a run; or a link, or a folder that moves with all that it holds by one rename.
struct MovedFile
{
    enum class What : std::uint8_t
    {
        file,
        link,
        folder ///< known by device and inode alone, since what it holds may change
    };
    enum class Deed : std::uint8_t
    {
        move,
        copy,      ///< the source stays
        removeCopy ///< takes a copy back: it goes, and what is at its new place stays as it is
    };
    /// Which of its places the collection does not know: a trash, or where new files come from.
    enum class Outside : std::uint8_t
    {
        neither,
        source,
        target
    };

    std::string from;       ///< where it lay at first, an absolute system path
    std::string to;         ///< where it shall lie
    FileMark mark;          ///< at first
    std::string recordId{}; ///< its record's lasting id, which only the caller understands
    What what = What::file;
    Deed deed = Deed::move;
    Outside outside = Outside::neither;
    /// The device that its new folder, or the nearest one above, was on when this was planned; 0 if
    /// nobody looked.
    std::uint64_t targetDevice = 0;
};

/// The rights of a folder.
struct FolderRights
{
    std::uint32_t mode = 0; ///< permission bits; 0: those of the folder above
    std::uint32_t owner = 0;
    std::uint32_t group = 0;
};

/// One change of the disk.
struct MoveStep
{
    enum class Kind : std::uint8_t
    {
        makeFolder,
        move,         ///< or copy, as its file says
        removeFolder, ///< only if it is empty
        writeNote,    ///< a new file with the text; without it the file of the step does not move
        removeNote    ///< only if it holds the text
    };

    Kind kind = Kind::move;
    std::size_t file = 0;  ///< of a move or a note: which file of the run
    std::string from{};    ///< of a move
    std::string to{};      ///< where the file goes; else the folder or the note
    FolderRights rights{}; ///< of a folder to be made
    /// Of a folder to be removed: goes even if it lost no file in this run.
    bool isOurs = false;
    std::string text{}; ///< of a note
};
} // namespace qo::host
