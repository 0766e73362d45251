#pragma once

#include <string>
#include <vector>

namespace qo::host
{
/// The value as the setting takes it: "1" for "yes" where a setting is a switch. Throws HostError,
/// with the values that there are, for one that the kernel would silently take for another.
std::string
checkedSetting(const std::string& key, const std::string& defaultValue, const std::string& value);

/// The values that the setting has, where they are a short list; none otherwise.
std::vector<std::string> settingChoices(const std::string& key);
} // namespace qo::host
