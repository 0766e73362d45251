#include "core/session/SettingValues.h"

#include "core/base/HostError.h"
#include "core/session/FileKinds.h"

#include <QoKernel/Kernel.h>

#include <unicode/uloc.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

namespace qo::host
{
namespace
{
bool isLanguage(const std::string& code)
{
    if (code.size() != 2)
        return false;
    for (const char* const* each = uloc_getISOLanguages(); *each; ++each)
    {
        if (code == *each)
            return true;
    }
    return false;
}

constexpr std::string_view switches[] = {"HideUnlicensedStations",
                                         "AutomatedRestartInProgress",
                                         "ForceNetbook",
                                         "AskCompatibilityModeRepair",
                                         "SendCompatibilityModeUsageStatistics",
                                         "SendUsageStatistics",
                                         "AmazonPurchaseOff",
                                         "UseArtistSimilarityVelmoraServer",
                                         "UseImportRule",
                                         "UseImportMoviesRule",
                                         "ReApplyRulesWhenTagsChanged",
                                         "DontShowSetReviewedDlg",
                                         "AppGuiMPFolded",
                                         "AppGuiTabFolded",
                                         "AppGuiLeftButtonsVisible"};
constexpr std::string_view percentages[] = {"UnrelMaxPercent", "DiskSpaceMinPerc"};
constexpr std::string_view levels[] = {
    "None", "Error", "Warning", "Info", "Debug", "Detail", "Verbose"};

template <class List>
bool has(const List& list, std::string_view text)
{
    return std::ranges::find(list, text) != std::end(list);
}

std::string inSmallLetters(std::string text)
{
    for (char& c : text)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return text;
}

bool isNumber(const std::string& text)
{
    int number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && rest == end;
}

[[noreturn]] void
refuse(const std::string& key, const std::string& value, const std::string& wanted)
{
    throw HostError(ExitCode::usage, key + " cannot be \"" + value + "\": " + wanted);
}

std::string checkedSwitch(const std::string& key, const std::string& value)
{
    constexpr std::string_view on[] = {"1", "yes", "true", "on"};
    constexpr std::string_view off[] = {"0", "no", "false", "off"};
    const std::string small = inSmallLetters(value);
    if (has(on, small))
        return "1";
    if (!has(off, small))
        refuse(key, value, "it is on (1, yes) or off (0, no)");
    return "0";
}
} // namespace

std::string
checkedSetting(const std::string& key, const std::string& defaultValue, const std::string& value)
{
    if (key.starts_with("MusicCollectionDir"))
        throw HostError(ExitCode::usage, key + " is kept by \"qo roots\"; use that");
    if (key == toUtf8(CString(FileKinds::setting)))
        static_cast<void>(FileKinds(value));
    if (has(switches, key))
        return checkedSwitch(key, value);
    const auto isValue = [&value](std::string_view level)
    { return inSmallLetters(std::string(level)) == inSmallLetters(value); };
    if (key == "TraceLevel" && std::ranges::none_of(levels, isValue))
        refuse(key, value, "there are None, Error, Warning, Info, Debug, Detail and Verbose");
    if (isNumber(defaultValue) && !isNumber(value))
        refuse(key, value, "it is a whole number, such as " + defaultValue);
    if (has(percentages, key) && (std::stoi(value) < 0 || std::stoi(value) > 100))
        refuse(key, value, "it is a percentage, 0 to 100");
    if (key == "Language" && !isLanguage(value))
        refuse(key, value, "it is a language's code of two letters, such as en or de");
    return value;
}

std::vector<std::string> settingChoices(const std::string& key)
{
    if (key == "TraceLevel")
        return {std::begin(levels), std::end(levels)};
    if (has(switches, key))
        return {"yes", "no"};
    return {};
}
} // namespace qo::host
