#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace qo::host
{
/// An object keeps the order in which its values were set. This header alone names the library,
/// which takes more than a second to read.
using Json = nlohmann::ordered_json;

/// One line of JSON for any text: bytes that are no UTF-8 become U+FFFD.
inline std::string dump(const Json& object)
{
    return object.dump(-1, ' ', false, Json::error_handler_t::replace);
}
} // namespace qo::host
