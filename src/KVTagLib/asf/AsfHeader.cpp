#include "KVTagLib/asf/AsfHeader.h"

#include "KVTagLib/asf/AsfCursor.h"

#include <taglib/tfile.h>

#include <algorithm>
#include <string_view>

// Takes a Windows Media header apart and puts it together again. An object is a GUID of 16 bytes,
// its size in 8 bytes (these 24 included) and its content; load() splits the header into such
// objects and those with attributes into their attributes, render() does the reverse, and
// everything else is kept as bytes. The values by name are in AsfHeaderValues.cpp.

using namespace TagLib;
using namespace std::string_view_literals;

namespace KVTagLib
{
namespace
{
constexpr bool littleEndian = false;
constexpr unsigned guidBytes = AsfCursor::guidBytes;
constexpr unsigned objectHeader = AsfCursor::objectHeader;
constexpr unsigned fileHeader = objectHeader + 6;
constexpr unsigned extensionHead = guidBytes + 2;
constexpr unsigned namedTexts = 5;
/// Where the file's size stands in the content of the file properties object.
constexpr unsigned fileSizeAt = 16;
// More than any real header has: limits the work for a hostile file.
constexpr long long maxHeaderBytes = 64L << 20;
constexpr std::size_t maxParts = 1U << 16;

constexpr auto headerGuid = "\x30\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\x00\xAA\x00\x62\xCE\x6C"sv;
constexpr auto descriptionGuid =
    "\x33\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\x00\xAA\x00\x62\xCE\x6C"sv;
constexpr auto extendedGuid = "\x40\xA4\xD0\xD2\x07\xE3\xD2\x11\x97\xF0\x00\xA0\xC9\x5E\xA8\x50"sv;
constexpr auto extensionGuid = "\xB5\x03\xBF\x5F\x2E\xA9\xCF\x11\x8E\xE3\x00\xC0\x0C\x20\x53\x65"sv;
constexpr auto metadataGuid = "\xEA\xCB\xF8\xC5\xAF\x5B\x77\x48\x84\x67\xAA\x8C\x44\xFA\x4C\xCA"sv;
constexpr auto libraryGuid = "\x94\x1C\x23\x44\x98\x94\xD1\x49\xA1\x41\x1D\x13\x4E\x45\x70\x54"sv;
constexpr auto propertiesGuid =
    "\xA1\xDC\xAB\x8C\x47\xA9\xCF\x11\x8E\xE4\x00\xC0\x0C\x20\x53\x65"sv;
/// The first bytes of the content of every header extension object.
constexpr auto newExtensionHead =
    "\x11\xD2\xD3\xAB\xBA\xA9\xCF\x11\x8E\xE6\x00\xC0\x0C\x20\x53\x65\x06\x00"sv;

ByteVector bytesOf(std::string_view bytes)
{
    return {bytes.data(), static_cast<unsigned>(bytes.size())};
}

void appendWord(ByteVector& bytes, unsigned number)
{
    bytes.append(ByteVector::fromShort(static_cast<short>(number), littleEndian));
}

void appendObject(ByteVector& bytes, const ByteVector& guid, const ByteVector& content)
{
    bytes.append(guid);
    bytes.append(ByteVector::fromLongLong(objectHeader + content.size(), littleEndian));
    bytes.append(content);
}
} // namespace

AsfHeader::Kind AsfHeader::kindOf(const ByteVector& guid)
{
    const std::string_view id(guid.data(), guid.size());
    return id == extendedGuid      ? Kind::extended
           : id == metadataGuid    ? Kind::metadata
           : id == libraryGuid     ? Kind::library
           : id == descriptionGuid ? Kind::description
           : id == extensionGuid   ? Kind::extension
                                   : Kind::other;
}

bool AsfHeader::load(File& file)
{
    *this = AsfHeader();
    file.seek(0);
    const ByteVector head = file.readBlock(fileHeader);
    if (head.size() < fileHeader || !head.startsWith(bytesOf(headerGuid)))
        return false;
    const long long size = head.toLongLong(guidBytes, littleEndian);
    if (size < fileHeader)
        return false;
    const unsigned count = head.toUInt(objectHeader, littleEndian);
    m_reserved = head.mid(objectHeader + 4);
    const long long present = std::min<long long>({size, file.length(), maxHeaderBytes});
    const ByteVector objects = file.readBlock(static_cast<unsigned long>(present - fileHeader));
    AsfCursor cursor(objects);
    for (unsigned i = 0; i < count; ++i)
    {
        if (!loadObject(cursor, false))
            return false;
    }
    m_rest = cursor.rest();
    if (objects.size() != size - fileHeader)
        return false;
    m_size = static_cast<unsigned>(size);
    return true;
}

bool AsfHeader::loadObject(AsfCursor& cursor, bool isInner)
{
    const ByteVector guid = cursor.take(guidBytes);
    const ByteVector content = cursor.objectContent();
    if ((!cursor.ok() && content.isEmpty()) || m_objects.size() >= maxParts)
        return false;
    const Kind kind = kindOf(guid);
    m_objects.push_back({guid, isInner && kind == Kind::extension ? Kind::other : kind, isInner});
    const bool isWhole = m_objects.back().kind == Kind::extension
                             ? loadExtension(content)
                             : takeApart(content, m_objects.back());
    return isWhole && cursor.ok();
}

bool AsfHeader::loadExtension(const ByteVector& content)
{
    // By index: loadObject() below appends to m_objects, which may move the elements.
    const std::size_t index = m_objects.size() - 1;
    AsfCursor cursor(content);
    m_objects[index].head = cursor.take(extensionHead);
    AsfCursor inner(cursor.takeCut(cursor.number()));
    m_objects[index].rest = cursor.rest();
    while (!inner.atEnd())
    {
        if (!loadObject(inner, true))
            return false;
    }
    return cursor.ok();
}

bool AsfHeader::takeApart(const ByteVector& content, Object& object)
{
    AsfCursor cursor(content);
    if (object.kind == Kind::description)
    {
        unsigned lengths[namedTexts];
        for (unsigned& length : lengths)
            length = cursor.word();
        for (const unsigned length : lengths)
            object.texts.push_back(cursor.take(length));
    }
    else if (object.kind != Kind::other)
    {
        Attribute attribute;
        for (unsigned left = cursor.word(); left > 0; --left)
        {
            if (!takeAttribute(cursor, object.kind, attribute) || ++m_attributes > maxParts)
                return false;
            object.attributes.push_back(attribute);
        }
    }
    object.rest = cursor.rest();
    return cursor.ok();
}

bool AsfHeader::takeAttribute(AsfCursor& cursor, Kind kind, Attribute& attribute)
{
    AsfValue& value = attribute.value;
    if (kind == Kind::extended)
    {
        attribute.name = cursor.take(cursor.word());
        value.type = cursor.word();
        value.bytes = cursor.take(cursor.word());
        return cursor.ok();
    }
    value.language = cursor.word();
    value.stream = cursor.word();
    const unsigned nameLength = cursor.word();
    value.type = cursor.word();
    const unsigned length = cursor.number();
    attribute.name = cursor.take(nameLength);
    value.bytes = cursor.take(length);
    return cursor.ok();
}

void AsfHeader::render(const Attribute& attribute, Kind kind, ByteVector& content)
{
    const AsfValue& value = attribute.value;
    if (kind == Kind::extended)
    {
        appendWord(content, attribute.name.size());
        content.append(attribute.name);
        appendWord(content, value.type);
        appendWord(content, value.bytes.size());
        content.append(value.bytes);
        return;
    }
    appendWord(content, value.language);
    appendWord(content, value.stream);
    appendWord(content, attribute.name.size());
    appendWord(content, value.type);
    content.append(ByteVector::fromUInt(value.bytes.size(), littleEndian));
    content.append(attribute.name);
    content.append(value.bytes);
}

bool AsfHeader::render(const Object& object, ByteVector& content)
{
    content.clear();
    if (object.kind == Kind::description)
    {
        for (const ByteVector& text : object.texts)
        {
            if (text.size() > maxAsfWord)
                return false;
            appendWord(content, text.size());
        }
        for (const ByteVector& text : object.texts)
            content.append(text);
    }
    else if (object.kind != Kind::other)
    {
        if (object.attributes.size() > maxAsfWord)
            return false;
        appendWord(content, static_cast<unsigned>(object.attributes.size()));
        for (const Attribute& attribute : object.attributes)
            render(attribute, object.kind, content);
    }
    content.append(object.rest);
    return true;
}

bool AsfHeader::renderObjects(ByteVector& objects, unsigned& count) const
{
    for (std::size_t i = 0; i < m_objects.size(); ++count)
    {
        const Object& object = m_objects[i++];
        ByteVector content;
        if (object.kind == Kind::extension)
        {
            ByteVector inner;
            for (; i < m_objects.size() && m_objects[i].isInner; ++i)
            {
                if (!render(m_objects[i], content))
                    return false;
                appendObject(inner, m_objects[i].guid, content);
            }
            content = object.head;
            content.append(ByteVector::fromUInt(inner.size(), littleEndian));
            content.append(inner);
            content.append(object.rest);
        }
        else if (!render(object, content))
            return false;
        appendObject(objects, object.guid, content);
    }
    return true;
}

bool AsfHeader::render(ByteVector& header) const
{
    unsigned count = 0;
    ByteVector objects;
    if (!renderObjects(objects, count))
        return false;
    ByteVector content = ByteVector::fromUInt(count, littleEndian);
    content.append(m_reserved);
    content.append(objects);
    content.append(m_rest);
    header.clear();
    appendObject(header, bytesOf(headerGuid), content);
    return true;
}

bool AsfHeader::setFileSize(long long old, long long size)
{
    const auto properties = std::ranges::find(m_objects, bytesOf(propertiesGuid), &Object::guid);
    constexpr unsigned end = fileSizeAt + 8;
    if (old == size || properties == m_objects.end() || properties->rest.size() < end ||
        properties->rest.toLongLong(fileSizeAt, littleEndian) != old)
        return false;
    ByteVector content = properties->rest.mid(0, fileSizeAt);
    content.append(ByteVector::fromLongLong(size, littleEndian));
    content.append(properties->rest.mid(end));
    properties->rest = content;
    return true;
}

bool AsfHeader::save(File& file)
{
    ByteVector header;
    if (m_size == 0 || !render(header))
        return false;
    const long long length = file.length();
    if (setFileSize(length, length - m_size + header.size()))
        render(header);
    file.insert(header, 0, m_size);
    m_size = header.size();
    return true;
}

const AsfHeader::Object* AsfHeader::find(Kind kind) const
{
    const auto found = std::find_if(m_objects.rbegin(),
                                    m_objects.rend(),
                                    [kind](const Object& object) { return object.kind == kind; });
    return found == m_objects.rend() ? nullptr : &*found;
}

AsfHeader::Object& AsfHeader::findOrMake(Kind kind)
{
    if (const Object* found = find(kind))
        return m_objects[static_cast<std::size_t>(found - m_objects.data())];
    auto at = m_objects.end();
    Object object{bytesOf(extendedGuid), kind};
    if (kind == Kind::description)
    {
        object.guid = bytesOf(descriptionGuid);
        object.texts.resize(namedTexts);
    }
    else if (kind == Kind::extension)
    {
        object.guid = bytesOf(extensionGuid);
        object.head = bytesOf(newExtensionHead);
    }
    else if (kind == Kind::library)
    {
        object.guid = bytesOf(libraryGuid);
        object.isInner = true;
        at = m_objects.begin() + (&findOrMake(Kind::extension) - m_objects.data()) + 1;
        at = std::find_if(at, m_objects.end(), [](const Object& next) { return !next.isInner; });
    }
    return *m_objects.insert(at, object);
}
} // namespace KVTagLib
