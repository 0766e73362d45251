#pragma once

#include <QoKernel/Kernel.h>

#include <optional>

class CHDFile;

namespace qo::host
{
/// What a picture or text belongs to.
struct FileOwner
{
    CString artist;
    CString album;
    CString title; ///< of the track that a text belongs to
    /// Whether it belongs to an artist, album or track of the collection. The names in its record
    /// are not enough: what they name may be gone.
    bool isPlaced = false;
};

/// None for other files. The owner is what the file is linked to. A file whose path comes before
/// all its music has no link after a load; its owner is then looked for by the names in its record.
/// On the kernel's thread, with the collection loaded.
std::optional<FileOwner> ownerOf(const CHDFile& file);
} // namespace qo::host
