#include "KVTagLib/TagsWriter.h"

namespace KVTagLib
{
ITagsWriter::~ITagsWriter() = default;
} // namespace KVTagLib
