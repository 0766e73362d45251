#pragma once

#include <QoKernel/Collection.h>

#include <nlohmann/json.hpp>

#include <string>

namespace qo::cli
{
using Json = nlohmann::ordered_json;

/// Puts a system path under the name. One that is no UTF-8 is shown with U+FFFD, and nameUri has
/// its exact bytes as a file URI.
void putPath(Json& object, const std::string& name, const std::string& path);
void putPath(Json& object, const std::string& name, const CString& path);

/// Every field of a record. Times are UTC or null, the duration milliseconds, the bitrate kbit/s.
Json recordJson(const QoFileDbItem& item);
/// The names of recordRow's columns.
std::string recordHeader();
/// The same fields as recordJson, between tabs; path and texts as Output::foreign gives them.
std::string recordRow(const QoFileDbItem& item, const std::string& shownPath);
/// "music", "video music" and the like: what the flag bits say.
std::string flagsText(unsigned flags);
/// One line of JSON for any text: bytes that are no UTF-8 become U+FFFD.
std::string dump(const Json& object);
} // namespace qo::cli
