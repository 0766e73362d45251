#pragma once

#include "KVTagLib/TagChanges.h"

#include <taglib/tiostream.h>

/// Puts changes into the tags that TagLib writes without loss, and into the bytes of the others.
namespace KVTagLib
{
void apply(const TagChanges& changes, TagLib::APE::Tag& tag);
void apply(const TagChanges& changes, AsfHeader& header);

/// The ID3v2 tag at the head of the file, or with hasTag false a new one. False if it cannot be
/// changed without loss.
bool applyToId3v2(const TagChanges& changes, bool hasTag, TagLib::IOStream& file);

/// The ID3v1 tag at the end of the file, if there is one; texts are cut to what it can hold.
void applyToId3v1(const TagChanges& changes, TagLib::IOStream& file);

/// Whether an ID3v1 tag can hold the new values whole.
bool fitsId3v1(const TagChanges& changes);
} // namespace KVTagLib
