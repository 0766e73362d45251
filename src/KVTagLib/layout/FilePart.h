#pragma once

#include "types/Export.h"
#include "types/String.h"

#include <cstdint>
#include <vector>

namespace KVTagLib
{
/// A piece of a sound file: a tag, a frame, an item, an atom, a chunk, a block, or the sound.
struct FilePart
{
    int depth = 0;         ///< in how many other parts it stands
    CString name = {};     ///< as the file has it ("TIT2", "©nam"), or what it is ("sound")
    std::int64_t size = 0; ///< bytes in the file, with its header
    CString text = {};     ///< the first characters of a text in it
};

/// Lists all pieces of the file in their order, each ahead of those in it, whatever they hold and
/// whether anybody can read them. The sizes of the parts of depth 0 add up to the file. Those in a
/// tag that is encoded as a whole (ID3v2 with unsynchronisation) count as decoded. A damaged part
/// is taken apart as far as it can be. At most 100,000 parts are listed; a last one without size
/// says so. False, with one sentence in error, if the file cannot be read, is of no known format,
/// or asks for more work than a sound file would. Throws nothing but std::bad_alloc.
QO_API bool readFileParts(const CString& path, std::vector<FilePart>& parts, CString& error);
} // namespace KVTagLib
