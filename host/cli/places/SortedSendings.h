#pragma once

#include "cli/places/FarTransfer.h"

#include <optional>
#include <string>
#include <vector>

namespace qo::cli
{
/// Upload rules as they were typed.
struct UploadOptions
{
    std::optional<std::string> music;
    std::optional<std::string> movies;

    bool isGiven() const { return music || movies; }
};
/// The options --music-rule and --movies-rule.
void addUploadOptions(CLI::App& command, UploadOptions& options);
/// The form in which a place keeps an upload rule that was typed: the name or id of a rule of the
/// store, or the absolute path of a rule file; "" for "". Throws HostError when there is none.
CString keptRule(const std::string& typed);
/// Gives music and videos the places that the upload rules of the place have for them, in folders
/// spelled as the place has them. Loads the collection. What has no place goes into the report and
/// leaves the list. Throws HostError when a rule is not there any more.
void sortSendings(host::Session& session,
                  host::ProgressReporter& progress,
                  FarPlace& place,
                  std::vector<Transfer>& sendings,
                  FarReport& report);
} // namespace qo::cli
