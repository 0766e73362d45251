#pragma once

#include <nlohmann/json.hpp>

namespace qo::host
{
/// An object keeps the order in which its values were set. This header alone names the library,
/// which takes more than a second to read.
using Json = nlohmann::ordered_json;
} // namespace qo::host
