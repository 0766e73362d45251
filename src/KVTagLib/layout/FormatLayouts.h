#pragma once

#include "KVTagLib/AudioFormat.h"
#include "KVTagLib/layout/FileParts.h"

#include <taglib/tiostream.h>

namespace KVTagLib
{
/// Adds the parts of a file of that format, however damaged it is; see FilePart. False for an
/// unknown format.
bool addParts(TagLib::IOStream& file, AudioFormat format, FileParts& parts);
} // namespace KVTagLib
