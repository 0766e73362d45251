#pragma once

#include "KVTagLib/TagChanges.h"

#include <taglib/tbytevector.h>

#include <initializer_list>
#include <vector>

namespace KVTagLib
{
class FileParts;

/// A Vorbis comment (the tag of FLAC, Ogg Vorbis, Opus and Speex), taken apart into entries that
/// keep their bytes. TagLib drops entries that it cannot read when it writes a comment, and sorts
/// the others; here the entries that do not change stay as they are.
///
///   <length> vendor | <count> | <length> "title=Low" | <length> "ARTIST=Ann" | rest
///   After a change of the title: the same with <length> "title=Low Tide"; the name keeps its
///   spelling. A second "ARTIST=" entry is a second artist, and "METADATA_BLOCK_PICTURE=" holds a
///   picture in Base64.
class XiphEditor
{
public:
    /// False if the comment cannot be taken apart; the object must not be used then.
    bool load(const TagLib::ByteVector& comment);
    /// Changes the texts and removes pictures; one is added by setPicture().
    void apply(const TagChanges& changes);
    /// The bytes of the comment, with whatever followed the entries in the loaded one.
    TagLib::ByteVector render() const;

    /// Adds every entry; see FilePart.
    void addParts(int depth, FileParts& parts) const;

    /// The index of the entry with the first front cover; -1 without one.
    int frontCover() const;
    /// Replaces the picture of that entry, or adds an entry for -1.
    void setPicture(int index, const TagLib::ByteVector& content);

private:
    /// The FLAC picture block of an entry: decoded, or built around a bare image; empty if the
    /// entry has no picture.
    static TagLib::ByteVector blockOf(const TagLib::ByteVector& entry);

    using Names = std::initializer_list<const char*>;

    std::vector<std::size_t> entriesOf(Names names) const;
    TagLib::StringList textsOf(const std::vector<std::size_t>& entries) const;
    /// Changes the text of an entry and keeps the spelling of its name.
    void setText(std::size_t index, const TagLib::String& text);
    void add(const char* name, const TagLib::ByteVector& value);
    void remove(const std::vector<std::size_t>& entries);
    /// Changes a field that is known by several names ("DATE", "YEAR"): all entries with any of
    /// these names are changed, and if there are none, one with the first name is added.
    void set(const TagChanges& changes, Field field, Names names);
    /// Sets one text under each of the names that are present; true if none is.
    bool setExisting(Names names, const TagLib::String& text);
    void setTrack(const TagChanges& changes);
    void setRating(const TagChanges& changes);
    void removePictures(const TagChanges& changes);

    TagLib::ByteVector m_vendor;
    std::vector<TagLib::ByteVector> m_entries; ///< "NAME=text"
    TagLib::ByteVector m_rest;
};

/// A FLAC picture block with this content and, unless it is empty, the description of an old block.
TagLib::ByteVector changedPicture(const TagLib::ByteVector& old, const TagLib::ByteVector& content);
/// The type of the picture in a block, see pictureType; none if it cannot be read.
int pictureTypeOf(const TagLib::ByteVector& block);
} // namespace KVTagLib
