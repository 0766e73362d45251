#pragma once

#include "core/plan/ReorganizePlan.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace qo::host
{
/// A file of a run.
struct MovedFile
{
    std::string from;     ///< where it lay at first, an absolute system path
    std::string to;       ///< where it shall lie
    FileMark mark;        ///< at first
    std::string recordId; ///< its record's lasting id, which only the caller understands
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
        move,
        removeFolder ///< only if it is empty
    };

    Kind kind = Kind::move;
    std::size_t file = 0; ///< of a move: which file of the run
    std::string from;     ///< of a move
    std::string to;       ///< where the file goes; else the folder
    FolderRights rights;  ///< of a folder to be made
    /// Of a folder to be removed: goes even if it lost no file in this run.
    bool isOurs = false;
};
} // namespace qo::host
