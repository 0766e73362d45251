#pragma once

#include <string>

namespace qo::host
{
/// The value as the setting takes it: "1" for "yes" where a setting is a switch. Throws HostError,
/// with the values that there are, for one that the kernel would silently take for another.
std::string
checkedSetting(const std::string& key, const std::string& defaultValue, const std::string& value);
} // namespace qo::host
