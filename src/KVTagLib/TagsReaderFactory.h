#pragma once

#include "KVTagLib/Forward.h"
#include "types/String.h"

namespace KVTagLib
{
/// Makes readers for files.
class QO_API CTagsReaderFactory
{
public:
    /// A reader for the file, which the caller deletes; null when no reader fits. Decides by the
    /// extension of the path (collection form) and does not touch the disk.
    static ITagsReader* CreateTagsReader(const CString& path);
};
} // namespace KVTagLib
