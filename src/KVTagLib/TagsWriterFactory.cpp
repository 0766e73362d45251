#include "KVTagLib/TagsWriterFactory.h"

#include "KVTagLib/AudioFormat.h"
#include "KVTagLib/FileTagsWriter.h"

#include <memory>

namespace KVTagLib
{
ITagsWriter* CTagsWriterFactory::CreateTagsWriter(const CString& path)
{
    const AudioFormat format = formatOfPath(path);
    if (format == AudioFormat::unknown)
        return nullptr;
    return std::make_unique<FileTagsWriter>(path, format).release();
}
} // namespace KVTagLib
