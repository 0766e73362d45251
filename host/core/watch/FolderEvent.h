#pragma once

#include <cstdint>
#include <string>

namespace qo::host
{
/// Something that happened below a watched folder. Paths are absolute system paths.
struct FolderEvent
{
    enum class Kind : std::uint8_t
    {
        added,     ///< a file that is there now; a folder's files come one by one
        changed,   ///< written to, or replaced
        removed,   ///< a file, or a folder with all it held
        moved,     ///< a file or a folder, to newPath
        needRescan ///< events were lost: reason says why; whoever gets it looks for himself
    };

    Kind kind = Kind::added;
    std::string path;
    std::string newPath;
    std::string reason;

    bool operator==(const FolderEvent&) const = default;
};
} // namespace qo::host
