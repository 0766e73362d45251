#pragma once

#include "core/store/StoreRows.h"

#include <vector>

/// The text files in which earlier versions kept what the store holds now. They are read once, when
/// the store takes them over.
namespace qo::host::oldFiles
{
constexpr const char16_t* edits = u"pending-tags.json";
constexpr const char16_t* heads = u"heads";
constexpr const char16_t* mark = u"unfinished-scan";

/// The size and the write time of the file as a text that tells one state from another; "" when the
/// file is absent or empty.
CString stateOf(const CString& file);

/// JSON: {"version": 1, "files": {PATH: {FIELD: VALUE}}}. Sizes and times are unknown. False when
/// the file is no such list; HostError when it cannot be read.
bool readEdits(const CString& file, std::vector<EditedFile>& edits);

/// A first line "velmora-heads 1", then a line for each file: lasting id, size, write time in ticks
/// and digest in hexadecimal, with blanks between. Lines of another form are passed over: all of it
/// can be made again.
std::vector<StoredHead> readHeads(const CString& file);

/// Root folders, each closed by a NUL, and in place of one "names since " with the time of a save.
ScanMark readMark(const CString& file);
} // namespace qo::host::oldFiles
