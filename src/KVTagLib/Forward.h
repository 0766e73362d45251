#pragma once

namespace KVTagLib
{
class CPictureTag;
class CTags;
class CTagsReaderFactory;
class CTagsWriterFactory;
class ITagsReader;
class ITagsWriter;
} // namespace KVTagLib
