#pragma once

namespace KVTagLib
{
class CPictureTag;
class CTags;
class CTagsReaderFactory;
class CTagsWriterFactory;
class ITagsReader;
class ITagsWriter;
class TagsAhead;
} // namespace KVTagLib
