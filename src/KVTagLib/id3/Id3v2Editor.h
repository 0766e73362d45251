#pragma once

#include "KVTagLib/TagChanges.h"

#include <taglib/tbytevector.h>
#include <taglib/tiostream.h>
#include <taglib/tstringlist.h>

#include <memory>
#include <vector>

namespace TagLib::ID3v2
{
class PopularimeterFrame;
}

namespace KVTagLib
{
class FileParts;

/// An ID3v2 tag, taken apart into frames that keep their bytes. TagLib reads these tags well, but
/// when it writes one it drops or converts frames that its version of the standard does not know.
/// So a changed tag is built here from the old frames, byte for byte, and the few new ones. The
/// version of the tag stays the same.
///
///   A title is changed from "Low" to "Low Tide" in a tag of version 2.4:
///     before: "ID3" 04 00 00 <size> | TPE1 ... | TIT2 <4> 00 00 03 "Low" | XYZW ... | zeros
///     after:  "ID3" 04 00 00 <size> | TPE1 ... | TIT2 <9> 00 00 03 "Low Tide" | XYZW ... | zeros
///   There are five zeros less, so the size of the whole tag is the same and the sound after it
///   does not move. The 03 is the encoding (UTF-8). A date of 2001-05-03 becomes TDRC "2001-05-03",
///   in version 2.3 TYER "2001" and TDAT "0305".
class Id3v2Editor
{
public:
    /// An empty tag of that version (2, 3 or 4).
    explicit Id3v2Editor(int majorVersion = 4) : m_version(majorVersion) {}

    /// The size of the tag that starts with these bytes, with header, padding and footer; 0 if no
    /// valid tag header is there. headerBytes are enough.
    static unsigned sizeOf(const TagLib::ByteVector& header);
    static constexpr unsigned headerBytes = 10;
    /// Where the first tag begins among the first bytes of a file; -1 without one. Foreign bytes
    /// ahead of a tag are rare and few: searchedBytes are enough.
    static int find(const TagLib::ByteVector& head);
    static constexpr unsigned searchedBytes = 64 << 10;

    /// False if the tag cannot be taken apart without loss; the object must not be used then. Bytes
    /// after the frames that hold none are kept.
    bool load(const TagLib::ByteVector& tag);
    /// The frames as bytes that TagLib reads; see readableFrame(); empty for those that nobody can
    /// read. After a load that failed the frames ahead of what was not understood.
    std::vector<TagLib::ByteVector> readableFrames() const;
    /// Adds every frame of the loaded tag; see FilePart.
    void addParts(int depth, FileParts& parts) const;
    int majorVersion() const { return m_version; }
    void apply(const TagChanges& changes);
    /// Builds the tag: as large as the loaded one if the frames fit in, else with 1 KiB of room to
    /// grow; empty when there are no frames. False if it would be larger than the format allows.
    bool render(TagLib::ByteVector& tag) const;

    /// The changed tag for an old one, which may be empty. Throws TagRefusal.
    static TagLib::ByteVector changed(const TagLib::ByteVector& old, const TagChanges& changes);

    /// The number of bytes in compressed frames.
    unsigned long compressedBytes() const;

private:
    struct Frame
    {
        TagLib::ByteVector id;
        TagLib::ByteVector flags;
        TagLib::ByteVector body;
    };

    /// False if there are frames after bytes that are not one.
    bool parseFrames(const TagLib::ByteVector& data);
    /// Some writers of version 2.4 store plain sizes where seven bits a byte are required:
    /// plainSizes reads these. Gives what follows the frames and their padding.
    TagLib::ByteVector parseFrames(const TagLib::ByteVector& data, bool plainSizes);
    /// Whether a frame that is whole stands somewhere in these bytes.
    bool holdsFrame(const TagLib::ByteVector& bytes) const;
    unsigned idBytes() const { return m_version == 2 ? 3 : 4; }
    unsigned frameHeaderBytes() const { return m_version == 2 ? 6 : 10; }
    const char* idOf(Field field) const;
    TagLib::StringList textsOf(const TagLib::ByteVector& id) const;
    void setTexts(const TagLib::ByteVector& id, const TagLib::StringList& texts);
    void setYear(const TagLib::String& date);
    void setLyrics(const TagChanges& changes);
    /// Null for another frame, or one that cannot be read.
    std::unique_ptr<TagLib::ID3v2::PopularimeterFrame> popularity(const Frame& frame) const;
    void setRating(int halfStars);
    bool isPicture(const Frame& frame) const;
    /// See pictureType; none for a frame that is no picture or cannot be read.
    int pictureTypeOf(const Frame& frame) const;
    void setPicture(const TagLib::ByteVector& content);
    void remove(const TagLib::ByteVector& id);
    TagLib::ByteVector renderFrame(const Frame& frame) const;
    /// The same with a content that TagLib reads; empty for one that nobody can read.
    TagLib::ByteVector renderReadable(const Frame& frame) const;
    /// The texts in one encoding with its terminator between them; sets the number of the encoding.
    TagLib::ByteVector encode(const TagLib::StringList& texts, char& encoding) const;

    int m_version;
    unsigned m_loadedSize = 0;
    char m_experimental = 0;
    std::vector<Frame> m_frames;
    TagLib::ByteVector m_stray; ///< after the frames and their padding
};

/// Changes the ID3v2 tag at the start of the file or, with hasTag false, adds one. Throws
/// TagRefusal if it cannot be changed without loss.
void applyToId3v2(const TagChanges& changes, bool hasTag, TagLib::IOStream& file);
} // namespace KVTagLib
