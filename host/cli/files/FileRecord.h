#pragma once

#include "core/base/Json.h"
#include "core/base/JsonLine.h"

#include <QoKernel/Collection.h>

#include <string>

namespace qo::host
{
struct FileField;
class KnownNotes;
} // namespace qo::host

namespace qo::cli
{
using host::dump;
using host::Json;

/// Puts a system path under the name. One that is no UTF-8 is shown with U+FFFD, and nameUri has
/// its exact bytes as a file URI.
void putPath(Json& object, const std::string& name, const std::string& path);
void putPath(Json& object, const std::string& name, const CString& path);

// The four below show the fields of FileFields.h.

/// Times are UTC or null, the duration milliseconds, the bitrate kbit/s. The fields of the tree are
/// searched for and left out unless asked for.
void putRecord(host::JsonLine& line,
               const QoFileDbItem& item,
               host::KnownNotes& notes,
               bool withTree = false);
/// One field on one line: lengths as "3:51", all other numbers and times as in JSON.
std::string
fieldText(const host::FileField& field, const QoFileDbItem& item, host::KnownNotes& notes);
/// The names of recordRow's columns.
std::string recordHeader();
/// The values of putRecord() without the tree, with tabs between them; paths without
/// control characters.
std::string recordRow(const QoFileDbItem& item, host::KnownNotes& notes);
/// Each field but the path on a line of its own, for people.
std::string recordText(const QoFileDbItem& item, host::KnownNotes& notes);

/// "artist - title", or the one that there is; on one line.
std::string artistAndTitle(const CString& artist, const CString& title);
/// The names of the flags that are set: "audio, music"; "none" without any.
std::string flagsText(unsigned flags);
} // namespace qo::cli
