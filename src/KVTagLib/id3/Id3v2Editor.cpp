#include "KVTagLib/id3/Id3v2Editor.h"

#include "KVTagLib/Rating.h"
#include "KVTagLib/TagRefusal.h"
#include "KVTagLib/TagText.h"
#include "KVTagLib/id3/ReadableFrames.h"
#include "KVTagLib/pictures/PictureStore.h"
#include "types/Utf.h"

#include <taglib/attachedpictureframe.h>
#include <taglib/id3v2framefactory.h>
#include <taglib/id3v2header.h>
#include <taglib/id3v2synchdata.h>
#include <taglib/popularimeterframe.h>
#include <taglib/textidentificationframe.h>
#include <taglib/unsynchronizedlyricsframe.h>

#include <algorithm>
#include <memory>

// load() takes a tag apart, apply() replaces the frames of changed fields, render() builds the tag.
// Versions differ: 2.2 has three-letter ids and sizes of 3 bytes; 2.3 plain sizes of 4 bytes; 2.4
// sizes of four times 7 bits, and encodes single frames instead of the whole tag.

using namespace TagLib;

namespace KVTagLib
{
namespace
{
constexpr unsigned flagsAt = 5;
constexpr unsigned sizeAt = 6;
constexpr char unsynchronised = '\x80';
constexpr char extendedHeader = '\x40';
constexpr char experimental = '\x20';
constexpr char encodedFrame = '\x02'; ///< in 2.4 for a single frame
constexpr char footer = '\x10';
constexpr unsigned roomToGrow = 1024;
constexpr unsigned maxTagBytes = 1U << 28; ///< the limit of four times 7 bits
constexpr unsigned largeCompressedFrame = 64 << 10;
constexpr char latin1 = 0;
constexpr char utf16 = 1;
constexpr char utf8 = 3;
constexpr int yearLength = 4;

bool has(char flags, char flag)
{
    return (flags & flag) != 0;
}

bool isSynchSafe(const ByteVector& bytes)
{
    return std::all_of(
        bytes.begin(), bytes.end(), [](char c) { return static_cast<signed char>(c) >= 0; });
}

bool isFrameId(const ByteVector& id)
{
    return std::all_of(id.begin(),
                       id.end(),
                       [](char c)
                       { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == ' '; });
}

ByteVector size24(unsigned size)
{
    return ByteVector::fromUInt(size).mid(1);
}

/// "JPG" of ".jpg".
ByteVector shortKind(const PictureKind& kind)
{
    ByteVector name = qo::toUtf8(CString(kind.extension).Mid(1, 3)).c_str();
    for (char& c : name)
        c = static_cast<char>(c - 'a' + 'A');
    return name;
}

String::Type typeOf(char encoding)
{
    return encoding == utf8 ? String::UTF8 : encoding == latin1 ? String::Latin1 : String::UTF16;
}

bool isCompressed(int version, const ByteVector& flags)
{
    return version == 3 ? has(flags[1], '\x80') : version == 4 && has(flags[1], '\x08');
}
} // namespace

unsigned Id3v2Editor::sizeOf(const ByteVector& header)
{
    if (header.size() < headerBytes || !header.startsWith("ID3") || header[3] < 2 || header[3] > 4)
        return 0;
    const ByteVector size = header.mid(sizeAt, 4);
    if (!isSynchSafe(size))
        return 0;
    const bool hasFooter = header[3] == 4 && has(header[flagsAt], footer);
    return headerBytes + ID3v2::SynchData::toUInt(size) + (hasFooter ? headerBytes : 0);
}

int Id3v2Editor::find(const ByteVector& head)
{
    for (int at = head.find("ID3"); at >= 0; at = head.find("ID3", static_cast<unsigned>(at) + 1))
    {
        if (sizeOf(head.mid(static_cast<unsigned>(at), headerBytes)) > 0)
            return at;
    }
    return -1;
}

bool Id3v2Editor::load(const ByteVector& tag)
{
    m_loadedSize = sizeOf(tag);
    if (m_loadedSize == 0 || tag.size() < m_loadedSize)
        return false;
    m_version = static_cast<unsigned char>(tag[3]);
    const char flags = tag[flagsAt];
    m_experimental = static_cast<char>(flags & experimental);
    ByteVector data = tag.mid(headerBytes, ID3v2::SynchData::toUInt(tag.mid(sizeAt, 4)));
    // Versions 2.2 and 2.3 encode the tag as a whole against bytes that look like a sound frame
    // (unsynchronisation); 2.4 does so for single frames, and those keep their bytes.
    if (m_version < 4 && has(flags, unsynchronised))
        data = ID3v2::SynchData::decode(data);
    if (m_version > 2 && has(flags, extendedHeader))
    {
        if (data.size() < 4)
            return false;
        const unsigned skip =
            m_version == 3 ? 4 + data.toUInt(0U, true) : ID3v2::SynchData::toUInt(data.mid(0, 4));
        data = data.mid(std::min(skip, data.size()));
    }
    else if (m_version == 2 && has(flags, extendedHeader))
        return false; // compressed, in a way that was never defined
    if (!parseFrames(data))
        return false;
    // In 2.4 the flag in the tag's header says that all frames are encoded. New frames are not, so
    // each old one gets the flag for itself.
    for (Frame& frame : m_frames)
    {
        if (m_version == 4 && has(flags, unsynchronised) &&
            ID3v2::SynchData::decode(frame.body).size() != frame.body.size())
            frame.flags[1] = static_cast<char>(frame.flags[1] | encodedFrame);
    }
    return true;
}

bool Id3v2Editor::parseFrames(const ByteVector& data)
{
    m_stray = parseFrames(data, m_version == 3);
    // Some writers of 2.4 store plain sizes where sizes of 7 bits a byte belong.
    if (m_version == 4 && !m_stray.isEmpty())
    {
        std::vector<Frame> frames;
        frames.swap(m_frames);
        const ByteVector stray = m_stray;
        m_stray = parseFrames(data, true);
        if (!m_stray.isEmpty() && frames.size() >= m_frames.size())
        {
            m_frames = frames;
            m_stray = stray;
        }
    }
    return !holdsFrame(m_stray);
}

bool Id3v2Editor::holdsFrame(const ByteVector& bytes) const
{
    for (unsigned at = 0; at + frameHeaderBytes() < bytes.size(); ++at)
    {
        if (bytes.data()[at] < 'A' || !isFrameId(bytes.mid(at, idBytes())))
            continue;
        const unsigned size = bytes.mid(at + idBytes(), idBytes()).toUInt(true);
        if (size > 0 && size <= bytes.size() - at - frameHeaderBytes())
            return true;
    }
    return false;
}

ByteVector Id3v2Editor::parseFrames(const ByteVector& data, bool plainSizes)
{
    m_frames.clear();
    unsigned at = 0;
    while (at + frameHeaderBytes() <= data.size() && data.data()[at] != 0)
    {
        Frame frame;
        frame.id = data.mid(at, idBytes());
        const ByteVector sizeField = data.mid(at + idBytes(), idBytes());
        if (!isFrameId(frame.id) || (m_version == 4 && !plainSizes && !isSynchSafe(sizeField)))
            break;
        const unsigned size = m_version == 4 && !plainSizes ? ID3v2::SynchData::toUInt(sizeField)
                                                            : sizeField.toUInt(true);
        if (size > data.size() - at - frameHeaderBytes())
            break;
        if (m_version > 2)
            frame.flags = data.mid(at + 8, 2);
        at += frameHeaderBytes();
        frame.body = data.mid(at, size);
        at += size;
        m_frames.push_back(frame);
    }
    while (at < data.size() && data.data()[at] == 0)
        ++at;
    return data.mid(at);
}

const char* Id3v2Editor::idOf(Field field) const
{
    const bool old = m_version == 2;
    switch (field)
    {
    case Field::artist:
        return old ? "TP1" : "TPE1";
    case Field::album:
        return old ? "TAL" : "TALB";
    case Field::title:
        return old ? "TT2" : "TIT2";
    case Field::genre:
        return old ? "TCO" : "TCON";
    case Field::trackNumber:
        return old ? "TRK" : "TRCK";
    case Field::year:
        return old ? "TYE" : m_version == 3 ? "TYER" : "TDRC";
    case Field::lyrics:
        return old ? "ULT" : "USLT";
    case Field::rating:
        return old ? "POP" : "POPM";
    default:
        return "";
    }
}

void Id3v2Editor::apply(const TagChanges& changes)
{
    for (const Field field : {Field::artist, Field::album, Field::title, Field::genre})
    {
        if (!changes.has(field))
            continue;
        StringList texts = changes.changed(field, textsOf(idOf(field)));
        if (field == Field::genre)
        {
            // A further genre may be a number whose meaning only the old frame knew.
            for (String& text : texts)
                text = tagTextOf(genreName(textOf(text)));
        }
        setTexts(idOf(field), texts);
    }
    if (changes.has(Field::trackNumber))
        setTexts(idOf(Field::trackNumber), changes.changed(Field::trackNumber, {}));
    if (changes.has(Field::year))
        setYear(tagTextOf(*changes.text(Field::year)));
    if (changes.has(Field::lyrics))
        setLyrics(changes);
    if (changes.has(Field::rating))
        setRating(changes.rating());
    if (changes.picture())
        setPicture(*changes.picture());
    if (changes.removesPictures())
        std::erase_if(m_frames,
                      [&](const Frame& frame)
                      { return isPicture(frame) && changes.removesPicture(pictureTypeOf(frame)); });
}

namespace
{
/// One frame as TagLib understands it, with all flags and encodings; null if it is of another kind.
template <class Kind>
std::unique_ptr<Kind> viewOf(int version, const ByteVector& rendered)
{
    const ID3v2::Header header = plainHeader(version, rendered.size());
    std::unique_ptr<ID3v2::Frame> frame(
        ID3v2::FrameFactory::instance()->createFrame(rendered, &header));
    auto* kind = dynamic_cast<Kind*>(frame.get());
    if (kind)
        static_cast<void>(frame.release());
    return std::unique_ptr<Kind>(kind);
}
} // namespace

StringList Id3v2Editor::textsOf(const ByteVector& id) const
{
    StringList texts;
    for (const Frame& frame : m_frames)
    {
        if (frame.id != id)
            continue;
        const bool large = frame.body.size() > largeCompressedFrame;
        if (large && isCompressed(m_version, frame.flags))
            continue;
        const auto view = viewOf<ID3v2::TextIdentificationFrame>(m_version, renderReadable(frame));
        if (view)
            texts.append(view->fieldList());
    }
    return texts;
}

ByteVector Id3v2Editor::encode(const StringList& texts, char& encoding) const
{
    // Only 2.4 knows UTF-8. Latin-1 beyond ASCII is avoided, since programs disagree about it.
    const bool plain =
        std::all_of(texts.begin(), texts.end(), [](const String& text) { return text.isAscii(); });
    encoding = m_version == 4 ? utf8 : plain ? latin1 : utf16;
    const String::Type type = typeOf(encoding);
    ByteVector bytes;
    for (const String& text : texts)
    {
        if (!bytes.isEmpty())
            bytes.append(ByteVector(encoding == utf16 ? 2 : 1, 0));
        bytes.append(text.data(type));
    }
    return bytes;
}

void Id3v2Editor::remove(const ByteVector& id)
{
    std::erase_if(m_frames, [&](const Frame& frame) { return frame.id == id; });
}

void Id3v2Editor::setTexts(const ByteVector& id, const StringList& texts)
{
    const auto old =
        std::ranges::find_if(m_frames, [&](const Frame& frame) { return frame.id == id; });
    // New frames come first: some readers stop at a frame that they do not understand.
    const auto place = old == m_frames.end() ? 0 : old - m_frames.begin();
    remove(id);
    if (texts.isEmpty())
        return;
    char encoding = 0;
    const ByteVector bytes = encode(texts, encoding);
    Frame frame{id, ByteVector(2, 0), ByteVector(1, encoding)};
    frame.body.append(bytes);
    m_frames.insert(m_frames.begin() + place, frame);
}

void Id3v2Editor::setYear(const String& date)
{
    for (const char* id : {"TYE", "TDA", "TIM", "TYER", "TDAT", "TIME", "TDRC"})
        remove(id);
    if (date.isEmpty())
        return;
    if (m_version == 4)
        return setTexts("TDRC", date);
    // Before 2.4 the year and, as "DDMM", the day are frames of their own.
    const int dash = date.find("-");
    setTexts(idOf(Field::year), dash > 0 ? date.substr(0, dash) : date);
    const bool hasDay = dash == yearLength && date.size() >= 10 && date[7] == '-';
    if (hasDay)
        setTexts(m_version == 2 ? "TDA" : "TDAT", date.substr(8, 2) + date.substr(5, 2));
}

void Id3v2Editor::setLyrics(const TagChanges& changes)
{
    const ByteVector id = idOf(Field::lyrics);
    if (changes.removes(Field::lyrics))
    {
        remove(id);
        return;
    }
    // The new frame takes language and description from the one that a reader shows.
    ByteVector language("XXX", 3);
    String description;
    auto place = m_frames.begin();
    for (auto it = m_frames.begin(); it != m_frames.end(); ++it)
    {
        if (it->id != id)
            continue;
        const auto view = viewOf<ID3v2::UnsynchronizedLyricsFrame>(m_version, renderReadable(*it));
        if (!view || isBlank(textOf(view->text(), maxLyricsLength)))
            continue;
        language = view->language().size() == 3 ? view->language() : language;
        description = view->description();
        place = m_frames.erase(it);
        break;
    }
    const String text = tagTextOf(*changes.text(Field::lyrics));
    StringList both(description);
    both.append(text);
    char encoding = 0;
    encode(both, encoding);
    const String::Type type = typeOf(encoding);
    Frame frame{id, ByteVector(2, 0), ByteVector(1, encoding)};
    frame.body.append(language);
    frame.body.append(description.data(type));
    frame.body.append(ByteVector(encoding == utf16 ? 2 : 1, 0));
    frame.body.append(text.data(type));
    m_frames.insert(place, frame);
}

std::unique_ptr<ID3v2::PopularimeterFrame> Id3v2Editor::popularity(const Frame& frame) const
{
    return frame.id == idOf(Field::rating)
               ? viewOf<ID3v2::PopularimeterFrame>(m_version, renderReadable(frame))
               : nullptr;
}

/// Each program has a frame with its own rating and count of plays, of which readers show the first
/// that rates. That one is changed, or any if none rates; without a rating all counts stay.
void Id3v2Editor::setRating(int halfStars)
{
    const ByteVector id = idOf(Field::rating);
    const ByteVector ownId = m_version == 2 ? "TXX" : "TXXX";
    std::erase_if(m_frames,
                  [&](const Frame& frame)
                  {
                      const auto own = frame.id == ownId
                                           ? viewOf<ID3v2::UserTextIdentificationFrame>(
                                                 m_version, renderReadable(frame))
                                           : nullptr;
                      return own && own->description().upper() == "FMPS_RATING";
                  });
    std::vector<Frame*> frames;
    std::vector<Frame*> rated;
    for (Frame& frame : m_frames)
    {
        if (const auto view = popularity(frame))
        {
            frames.push_back(&frame);
            if (view->rating() > 0)
                rated.push_back(&frame);
        }
    }
    if (halfStars > 0 && frames.empty())
    {
        m_frames.insert(m_frames.begin(), {id, ByteVector(2, 0), ByteVector(6, 0)});
        rated = {&m_frames.front()};
    }
    else if (halfStars > 0)
        rated = {rated.empty() ? frames.front() : rated.front()};
    for (Frame* const frame : rated)
    {
        const auto view = popularity(*frame);
        ByteVector body = view->email().data(String::Latin1);
        body.append(ByteVector(1, 0));
        body.append(ByteVector(1, static_cast<char>(byteOfRating(halfStars))));
        body.append(ByteVector::fromUInt(view->counter()));
        *frame = {id, ByteVector(2, 0), body};
    }
}

bool Id3v2Editor::isPicture(const Frame& frame) const
{
    return frame.id == (m_version == 2 ? "PIC" : "APIC");
}

int Id3v2Editor::pictureTypeOf(const Frame& frame) const
{
    const auto view = isPicture(frame)
                          ? viewOf<ID3v2::AttachedPictureFrame>(m_version, renderReadable(frame))
                          : nullptr;
    return view ? view->type() : pictureType::none;
}

void Id3v2Editor::setPicture(const ByteVector& content)
{
    const ByteVector id = m_version == 2 ? "PIC" : "APIC";
    const auto front = std::ranges::find_if(
        m_frames,
        [this](const Frame& frame) { return pictureTypeOf(frame) == pictureType::frontCover; });
    const auto place = front == m_frames.end() ? m_frames.begin() : m_frames.erase(front);
    Frame frame{id, ByteVector(2, 0), ByteVector(1, latin1)};
    const PictureKind& kind = *pictureKindOf(content);
    if (m_version == 2)
        frame.body.append(shortKind(kind));
    else
    {
        frame.body.append(qo::toUtf8(CString(kind.mimeType)).c_str());
        frame.body.append(ByteVector(1, 0));
    }
    frame.body.append(ByteVector(1, pictureType::frontCover));
    frame.body.append(ByteVector(1, 0)); // no description
    frame.body.append(content);
    m_frames.insert(place, frame);
}

ByteVector Id3v2Editor::renderFrame(const Frame& frame) const
{
    ByteVector bytes = frame.id;
    const unsigned size = frame.body.size();
    bytes.append(m_version == 2   ? size24(size)
                 : m_version == 3 ? ByteVector::fromUInt(size)
                                  : ID3v2::SynchData::fromUInt(size));
    if (m_version > 2)
        bytes.append(frame.flags);
    bytes.append(frame.body);
    return bytes;
}

bool Id3v2Editor::render(ByteVector& tag) const
{
    tag.clear();
    ByteVector frames;
    for (const Frame& frame : m_frames)
    {
        if (m_version == 2 && frame.body.size() >= 1U << 24)
            return false;
        frames.append(renderFrame(frame));
    }
    const unsigned content = frames.size() + m_stray.size();
    if (content == 0 || content + 2 * roomToGrow >= maxTagBytes)
        return content == 0;
    // A tag of the same size leaves the sound where it is in the file. A reader ends at padding, so
    // it does not come to stray bytes at the end.
    const unsigned padding = m_stray.isEmpty() ? 0 : frameHeaderBytes();
    const unsigned needed = headerBytes + frames.size() + padding + m_stray.size();
    const unsigned size = needed <= m_loadedSize ? m_loadedSize : needed + roomToGrow;
    frames.resize(size - headerBytes - m_stray.size(), 0);
    frames.append(m_stray);
    tag = ByteVector("ID3", 3);
    tag.append(ByteVector(1, static_cast<char>(m_version)));
    tag.append(ByteVector(1, 0));
    tag.append(ByteVector(1, m_experimental));
    tag.append(ID3v2::SynchData::fromUInt(frames.size()));
    tag.append(frames);
    return true;
}

std::vector<ByteVector> Id3v2Editor::readableFrames() const
{
    std::vector<ByteVector> frames;
    for (const Frame& frame : m_frames)
        frames.push_back(renderReadable(frame));
    return frames;
}

ByteVector Id3v2Editor::renderReadable(const Frame& frame) const
{
    Frame readable = frame;
    readable.body = readableFrame(m_version, frame.id, readable.flags, frame.body);
    return readable.body.isEmpty() ? ByteVector() : renderFrame(readable);
}

unsigned long Id3v2Editor::compressedBytes() const
{
    unsigned long sum = 0;
    for (const Frame& frame : m_frames)
        sum += m_version > 2 && isCompressed(m_version, frame.flags) ? frame.body.size() : 0;
    return sum;
}

ByteVector Id3v2Editor::changed(const ByteVector& old, const TagChanges& changes)
{
    ByteVector tag;
    Id3v2Editor editor;
    if (!old.isEmpty() && !editor.load(old))
        throw TagRefusal(withCopyAdvice(u"its ID3v2 tag is damaged"));
    editor.apply(changes);
    if (!editor.render(tag))
        throw TagRefusal(u"its ID3v2 tag would be larger than its version allows");
    return tag;
}

void applyToId3v2(const TagChanges& changes, bool hasTag, IOStream& file)
{
    long start = 0;
    ByteVector old;
    if (hasTag)
    {
        file.seek(0);
        start = std::max(0, Id3v2Editor::find(file.readBlock(Id3v2Editor::searchedBytes)));
        file.seek(start);
        const unsigned size = Id3v2Editor::sizeOf(file.readBlock(Id3v2Editor::headerBytes));
        file.seek(start);
        old = file.readBlock(std::max(size, Id3v2Editor::headerBytes));
    }
    const ByteVector tag = Id3v2Editor::changed(old, changes);
    // A tag without frames would break the standard.
    if (tag.isEmpty())
        file.removeBlock(static_cast<unsigned long>(start), old.size());
    else
        file.insert(tag, static_cast<unsigned long>(start), old.size());
}
} // namespace KVTagLib
