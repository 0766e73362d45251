#pragma once

#include "KVTagLib/TagChanges.h"

#include <taglib/tbytevector.h>
#include <taglib/tstringlist.h>

#include <vector>

namespace KVTagLib
{
/// An ID3v2 tag as its bytes. TagLib reads these tags well, but when it writes one it drops or
/// converts frames that its version of the standard does not know; so a changed tag is made here
/// from the old frames, byte for byte, and the few new ones. The version of the tag stays.
class Id3v2Editor
{
public:
    /// An empty tag of that version (2, 3 or 4).
    explicit Id3v2Editor(int majorVersion = 4) : m_version(majorVersion) {}

    /// The size of the tag that starts here, header, padding and footer included; 0 if none does.
    static unsigned sizeOf(const TagLib::ByteVector& header);
    static constexpr unsigned headerBytes = 10;

    /// False if the tag cannot be taken apart without loss; the object is then of no use.
    bool load(const TagLib::ByteVector& tag);
    void apply(const TagChanges& changes);
    /// As large as the tag that was loaded if that is enough, else with some room to grow; empty
    /// for a tag without frames. False if the tag is larger than can be written.
    bool render(TagLib::ByteVector& tag) const;

    /// How many bytes of compressed frames the tag holds.
    unsigned long compressedBytes() const;

private:
    struct Frame
    {
        TagLib::ByteVector id;
        TagLib::ByteVector flags;
        TagLib::ByteVector body;
    };

    bool parseFrames(const TagLib::ByteVector& data, bool plainSizes);
    unsigned frameHeaderBytes() const { return m_version == 2 ? 6 : 10; }
    const char* idOf(Field field) const;
    TagLib::StringList textsOf(const TagLib::ByteVector& id) const;
    void setTexts(const TagLib::ByteVector& id, const TagLib::StringList& texts);
    void setYear(const TagLib::String& date);
    void setLyrics(const TagChanges& changes);
    void setPicture(const TagLib::ByteVector& content);
    void remove(const TagLib::ByteVector& id);
    TagLib::ByteVector renderFrame(const Frame& frame) const;
    /// The text with its encoding's terminator between, and the encoding's number.
    TagLib::ByteVector encode(const TagLib::StringList& texts, char& encoding) const;

    int m_version;
    unsigned m_loadedSize = 0;
    char m_experimental = 0;
    std::vector<Frame> m_frames;
};
} // namespace KVTagLib
