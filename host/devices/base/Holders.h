#pragma once

#include <functional>
#include <string>
#include <vector>

namespace qo::host
{
/// The programs that have such a path open, or work in such a folder: "bash (1234)", each once.
/// This one is not among them, nor are those of which this user may not know what they have open.
std::vector<std::string> holdersOf(const std::function<bool(const std::string& path)>& isMeant);

/// "bash (1234) uses it", for a failure's end; a sentence that does not know where there are none.
std::string holderWords(const std::vector<std::string>& holders);
} // namespace qo::host
