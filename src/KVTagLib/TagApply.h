#pragma once

#include "KVTagLib/TagChanges.h"

#include <taglib/tiostream.h>

/// Applies changes to tags: to those that TagLib writes without loss, and to the bytes of the
/// others.
namespace KVTagLib
{
/// Change the tag object; saving it is up to the caller.
void apply(const TagChanges& changes, TagLib::APE::Tag& tag);
void apply(const TagChanges& changes, AsfHeader& header);

/// Changes the ID3v2 tag at the start of the file or, with hasTag false, adds one. False if it
/// cannot be changed without loss.
bool applyToId3v2(const TagChanges& changes, bool hasTag, TagLib::IOStream& file);

/// Changes the ID3v1 tag at the end of the file, if there is one. Texts are cut to what it can hold
/// (30 letters), which is no loss where a better tag stands beside it.
void applyToId3v1(const TagChanges& changes, TagLib::IOStream& file);

/// Whether an ID3v1 tag can hold the new values completely, so that it need not be accompanied by
/// another one.
bool fitsId3v1(const TagChanges& changes);
} // namespace KVTagLib
