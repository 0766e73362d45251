#pragma once

#include "KVTagLib/TagChanges.h"

#include <taglib/tbytevector.h>

#include <initializer_list>
#include <vector>

namespace KVTagLib
{
/// A Vorbis comment as its bytes. TagLib drops the entries that it cannot read when it writes a
/// comment, and orders the others anew; here the entries that do not change stay as they are.
class XiphEditor
{
public:
    /// False if the comment cannot be taken apart; the object is then of no use.
    bool load(const TagLib::ByteVector& comment);
    /// The texts alone.
    void apply(const TagChanges& changes);
    /// What followed the entries still does.
    TagLib::ByteVector render() const;

    /// The entry with the picture that a reader shows, and whether that is a front cover; -1
    /// without any.
    int shownPicture(bool& front) const;
    /// Puts the picture into that entry, for -1 into a new one.
    void setPicture(int index, const TagLib::ByteVector& content);

private:
    using Names = std::initializer_list<const char*>;

    std::vector<std::size_t> entriesOf(Names names) const;
    TagLib::StringList textsOf(const std::vector<std::size_t>& entries) const;
    /// Keeps the spelling of the name.
    void setText(std::size_t index, const TagLib::String& text);
    void add(const char* name, const TagLib::ByteVector& value);
    void remove(const std::vector<std::size_t>& entries);
    /// The names under which the same thing is kept: all that are there change, and without any
    /// the first name is made.
    void set(const TagChanges& changes, Field field, Names names);
    /// One text under each of the names that are there; true if none is.
    bool setExisting(Names names, const TagLib::String& text);
    void setTrack(const TagChanges& changes);

    TagLib::ByteVector m_vendor;
    std::vector<TagLib::ByteVector> m_entries; ///< "NAME=text"
    TagLib::ByteVector m_rest;
};

/// A picture block with this content and, unless it is empty, the description of an old one.
TagLib::ByteVector changedPicture(const TagLib::ByteVector& old, const TagLib::ByteVector& content);
/// Whether a reader shows something of this picture block.
bool isShownPicture(const TagLib::ByteVector& block, bool& front);
} // namespace KVTagLib
