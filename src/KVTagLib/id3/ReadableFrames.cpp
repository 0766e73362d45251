#include "KVTagLib/id3/ReadableFrames.h"

#include "KVTagLib/id3/Id3v2Editor.h"
#include "types/CharClass.h"

#include <taglib/textidentificationframe.h>

using namespace TagLib;

namespace KVTagLib
{
namespace
{

bool isFlagged(const ByteVector& flags, char flag)
{
    return flags.size() > 1 && (flags[1] & flag) != 0;
}

/// Letters count, those of Latin twice: each Latin letter is a Chinese one in the other order.
int lettersOf(const ByteVector& text, unsigned high, unsigned low)
{
    constexpr char16_t endOfLatin = 0x250;
    int letters = 0;
    for (const char* at = text.data(); text.data() + text.size() - at > 1; at += 2)
    {
        const auto unit = static_cast<char16_t>(static_cast<unsigned char>(at[high]) << 8 |
                                                static_cast<unsigned char>(at[low]));
        letters += qo::isLetter(unit) ? (unit < endOfLatin ? 2 : 1) : 0;
    }
    return letters;
}

bool isBigEndian(const ByteVector& text)
{
    return lettersOf(text, 0, 1) > lettersOf(text, 1, 0);
}

ByteVector withMark(const ByteVector& text)
{
    const bool hasMark = text.startsWith("\xff\xfe") || text.startsWith("\xfe\xff");
    if (hasMark || text.size() < 2)
        return text;
    ByteVector marked(isBigEndian(text) ? "\xfe\xff" : "\xff\xfe", 2);
    marked.append(text);
    return marked;
}

/// Lyrics are an encoding, a language, a description, a zero and the text.
ByteVector lyricsWithMarks(const ByteVector& body)
{
    constexpr unsigned textAt = 4;
    unsigned end = textAt;
    while (end + 1 < body.size() && (body.data()[end] != 0 || body.data()[end + 1] != 0))
        end += 2;
    ByteVector marked = body.mid(0, textAt);
    marked.append(withMark(body.mid(textAt, end - textAt)));
    marked.append(ByteVector(2, 0));
    marked.append(withMark(body.mid(end + 2)));
    return marked;
}

/// Where the byte of a group stands, and the flag that says so; the versions differ.
ByteVector withoutGroup(int version, ByteVector& flags, const ByteVector& body)
{
    const char group = version == 4 ? '\x40' : '\x20';
    if (version == 2 || !isFlagged(flags, group))
        return body;
    unsigned at = 0;
    if (version == 3)
        at = (isFlagged(flags, '\x80') ? 4 : 0) + (isFlagged(flags, '\x40') ? 1 : 0);
    flags[1] = static_cast<char>(flags[1] & ~group);
    ByteVector rest = body.mid(0, at);
    rest.append(body.mid(at + 1));
    return rest;
}

/// Whether TagLib has come to the end of the tag, and has read what it came to.
bool isReadWhole(const ID3v2::Tag& tag, const BoundedFrameFactory& factory, IOStream& stream)
{
    const ID3v2::Header& header = *tag.header();
    if (header.extendedHeader() || header.unsynchronisation() || factory.hasGroups())
        return false;
    for (const ID3v2::Frame* frame : tag.frameList())
    {
        const auto* text = dynamic_cast<const ID3v2::TextIdentificationFrame*>(frame);
        if (text && (text->textEncoding() > String::UTF8 ||
                     (text->textEncoding() == String::UTF16 && text->toString().isEmpty())))
            return false;
    }
    // Padding follows the last frame, or nothing.
    const unsigned long end = Id3v2Editor::headerBytes + factory.seenBytes();
    if (end >= header.tagSize() + Id3v2Editor::headerBytes)
        return true;
    stream.seek(0);
    if (stream.readBlock(Id3v2Editor::headerBytes).startsWith("ID3"))
        stream.seek(static_cast<long>(end));
    return stream.readBlock(1) == ByteVector(1, 0);
}
} // namespace

ByteVector
readableFrame(int version, const ByteVector& id, ByteVector& flags, const ByteVector& body)
{
    ByteVector content = withoutGroup(version, flags, body);
    // What is encoded, compressed or encrypted is up to TagLib.
    const bool isPlain = version == 2 || (version == 3 && (flags[1] & '\xC0') == 0) ||
                         (version == 4 && (flags[1] & '\x0F') == 0);
    const bool isText = id.startsWith("T");
    const bool isLyrics = id == "USLT" || id == "ULT";
    if (!isPlain || (!isText && !isLyrics) || content.isEmpty())
        return content;
    if (content[0] < 0 || content[0] > String::UTF8)
        return {};
    if (content[0] != String::UTF16)
        return content;
    if (isLyrics)
        return lyricsWithMarks(content);
    ByteVector text = content.mid(0, 1);
    text.append(withMark(content.mid(1)));
    return text;
}

void readOn(ID3v2::Tag& tag, const BoundedFrameFactory& factory, IOStream& stream)
{
    if (isReadWhole(tag, factory, stream))
        return;
    stream.seek(0);
    const int start = Id3v2Editor::find(stream.readBlock(Id3v2Editor::searchedBytes));
    if (start < 0)
        return;
    stream.seek(start);
    const unsigned size = Id3v2Editor::sizeOf(stream.readBlock(Id3v2Editor::headerBytes));
    stream.seek(start);
    readAgain(tag, stream.readBlock(size));
}

void readAgain(ID3v2::Tag& tag, const ByteVector& bytes)
{
    Id3v2Editor editor;
    (void)editor.load(bytes);
    const std::vector<ByteVector> frames = editor.readableFrames();
    if (frames.size() < tag.frameList().size())
        return;
    for (ID3v2::Frame* frame : ID3v2::FrameList(tag.frameList()))
        tag.removeFrame(frame);
    const ID3v2::Header header = plainHeader(editor.majorVersion(), bytes.size());
    const BoundedFrameFactory bounded;
    for (const ByteVector& content : frames)
    {
        ID3v2::Frame* const frame =
            content.isEmpty() ? nullptr : bounded.createFrame(content, &header);
        if (frame)
            tag.addFrame(frame);
    }
    bounded.rebuildAggregateFrames(&tag);
}
} // namespace KVTagLib
