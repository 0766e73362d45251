#include "KVTagLib/TagsReaderFactory.h"

#include "KVTagLib/AudioFormat.h"
#include "KVTagLib/FileTagsReader.h"

#include <memory>

namespace KVTagLib
{
ITagsReader* CTagsReaderFactory::CreateTagsReader(const CString& path)
{
    const AudioFormat format = formatOfPath(path);
    if (format == AudioFormat::unknown)
        return nullptr;
    return std::make_unique<FileTagsReader>(path, format).release();
}
} // namespace KVTagLib
