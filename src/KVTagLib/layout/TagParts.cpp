#include "KVTagLib/TagText.h"
#include "KVTagLib/ape/ApeTag.h"
#include "KVTagLib/asf/AsfCursor.h"
#include "KVTagLib/asf/AsfHeader.h"
#include "KVTagLib/id3/FrameBounds.h"
#include "KVTagLib/id3/Id3v2Editor.h"
#include "KVTagLib/layout/FileParts.h"
#include "KVTagLib/xiph/FlacBlocks.h"
#include "KVTagLib/xiph/XiphEditor.h"

#include <cstdio>
#include <memory>

// What the tags that are taken apart consist of: frames, items, entries, blocks and attributes.

using namespace TagLib;

namespace KVTagLib
{
namespace
{
/// The text at the start of bytes that may be long and anything, several texts with a slash between
/// them.
String startOfText(const ByteVector& bytes)
{
    unsigned end = 256;
    // Not within a sign of UTF-8.
    while (end > 0 && end < bytes.size() && (bytes[static_cast<int>(end)] & 0xC0) == 0x80)
        --end;
    return textOfBytes(bytes.mid(0, end)).split(String(std::string(1, '\0'))).toString(" / ");
}
} // namespace

void Id3v2Editor::addParts(int depth, FileParts& parts) const
{
    const BoundedFrameFactory bounded;
    std::int64_t rest = m_loadedSize - std::int64_t(m_stray.size());
    for (const Frame& frame : m_frames)
    {
        const std::int64_t size = frameHeaderBytes() + frame.body.size();
        rest -= size;
        if (parts.isFull())
            continue;
        const ByteVector readable = renderReadable(frame);
        const ID3v2::Header header = plainHeader(m_version, readable.size());
        const std::unique_ptr<ID3v2::Frame> view(
            readable.isEmpty() ? nullptr : bounded.createFrame(readable, &header));
        parts.add(depth, nameOfBytes(frame.id), size, view ? view->toString() : String());
    }
    parts.addRest(depth, "header and padding", rest);
    parts.addRest(depth, "stray bytes", m_stray.size());
}

void ApeTag::addParts(int depth, std::int64_t size, FileParts& parts) const
{
    constexpr unsigned itemOverhead = 9; ///< size, flags, and the zero after the key
    for (const Item& item : m_items)
    {
        const std::int64_t bytes = itemOverhead + item.key.size() + item.value.size();
        size -= bytes;
        const bool isText = (item.flags & 6) == 0;
        parts.add(depth, nameOfBytes(item.key), bytes, isText ? startOfText(item.value) : String());
    }
    parts.addRest(depth, "header and footer", size);
}

void XiphEditor::addParts(int depth, FileParts& parts) const
{
    constexpr unsigned lengthBytes = 4;
    // The number of the entries stands after the vendor.
    parts.add(depth, "vendor", 2 * lengthBytes + m_vendor.size(), String(m_vendor, String::UTF8));
    for (const ByteVector& entry : m_entries)
    {
        const int equals = entry.find('=');
        const auto nameBytes = equals < 0 ? 0U : static_cast<unsigned>(equals);
        const bool isPicture = !blockOf(entry).isEmpty();
        parts.add(depth,
                  nameOfBytes(entry.mid(0, nameBytes)),
                  lengthBytes + entry.size(),
                  isPicture ? String() : startOfText(entry.mid(nameBytes + (equals < 0 ? 0 : 1))));
    }
    parts.addRest(depth, "rest", m_rest.size());
}

long FlacBlocks::addParts(bool isWhole, FileParts& parts) const
{
    constexpr unsigned blockHeader = 4;
    static constexpr const char* names[] = {
        "stream info", "padding", "application", "seek table", "comment", "cue sheet", "picture"};
    long added = 0;
    for (const FlacBlock& block : blocks)
    {
        const auto type = static_cast<unsigned char>(block.type);
        const long size = blockHeader + block.content.size();
        added += size;
        parts.add(0,
                  type < std::size(names) ? String(names[type])
                                          : "block " + String::number(static_cast<int>(type)),
                  size);
        XiphEditor comment;
        if (block.type == FlacBlock::comment && comment.load(block.content))
            comment.addParts(1, parts);
    }
    if (!isWhole)
        return added;
    const auto whole = static_cast<long>(m_size);
    parts.addRest(0, "padding", whole - added);
    return whole;
}

String AsfHeader::nameOf(const ByteVector& guid)
{
    static constexpr const char* names[] = {"extended content description",
                                            "metadata",
                                            "metadata library",
                                            "content description",
                                            "header extension"};
    const auto kind = static_cast<std::size_t>(kindOf(guid.mid(0, AsfCursor::guidBytes)));
    if (kind < std::size(names))
        return names[kind];
    // The first group of digits of the GUID, as it is written, tells these apart.
    struct Known
    {
        unsigned start;
        const char* name;
    };
    static constexpr Known known[] = {{0x8CABDCA1, "file properties"},
                                      {0xB7DC0791, "stream properties"},
                                      {0x86D15240, "codec list"},
                                      {0x7BF875CE, "stream bitrates"},
                                      {0x1806D474, "padding"},
                                      {0x7C4346A9, "language list"},
                                      {0x14E6A5CB, "extended stream properties"},
                                      {0x75B22636, "data"},
                                      {0x33000890, "index"}};
    const unsigned start = guid.size() < 4 ? 0 : guid.toUInt(0U, false);
    const auto* const found = std::ranges::find(known, start, &Known::start);
    if (found != std::end(known))
        return found->name;
    char digits[9] = {};
    std::snprintf(digits, sizeof digits, "%08x", start);
    return String("object ") + digits;
}

void AsfHeader::addParts(int depth, FileParts& parts) const
{
    static constexpr const char* texts[] = {
        "title", "author", "copyright", "description", "rating"};
    for (const Object& object : m_objects)
    {
        ByteVector content;
        render(object, content);
        const int level = depth + (object.isInner ? 1 : 0);
        const std::int64_t ownSize = AsfCursor::objectHeader + content.size();
        parts.add(level,
                  nameOf(object.guid),
                  object.kind == Kind::extension ? extensionSize(object) : ownSize);
        for (std::size_t i = 0; i < object.texts.size() && i < std::size(texts); ++i)
        {
            if (!object.texts[i].isEmpty())
                parts.add(level + 1, texts[i], object.texts[i].size(), asfText(object.texts[i]));
        }
        for (const Attribute& attribute : object.attributes)
        {
            ByteVector bytes;
            render(attribute, object.kind, bytes);
            parts.add(level + 1, asfText(attribute.name), bytes.size(), shownText(attribute.value));
        }
    }
}

std::int64_t AsfHeader::extensionSize(const Object& extension) const
{
    constexpr unsigned lengthBytes = 4;
    std::int64_t size =
        AsfCursor::objectHeader + extension.head.size() + lengthBytes + extension.rest.size();
    const auto index = static_cast<std::size_t>(&extension - m_objects.data());
    for (std::size_t i = index + 1; i < m_objects.size() && m_objects[i].isInner; ++i)
    {
        ByteVector content;
        render(m_objects[i], content);
        size += AsfCursor::objectHeader + content.size();
    }
    return size;
}
} // namespace KVTagLib
