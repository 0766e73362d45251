#pragma once

#include "KVTagLib/Forward.h"
#include "types/String.h"

namespace KVTagLib
{
/// Makes writers for files.
class QO_API CTagsWriterFactory
{
public:
    /// A writer for the file, which the caller deletes; null when no writer fits. Decides by the
    /// extension of the path (collection form) and does not touch the disk.
    static ITagsWriter* CreateTagsWriter(const CString& path);
};
} // namespace KVTagLib
