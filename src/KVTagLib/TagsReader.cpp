#include "KVTagLib/TagsReader.h"

namespace KVTagLib
{
ITagsReader::~ITagsReader() = default;
} // namespace KVTagLib
