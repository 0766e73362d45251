#include "cli/tags/TagWords.h"

#include "cli/files/TagFields.h"
#include "core/base/ClosestName.h"
#include "core/base/HostError.h"
#include "core/base/HostFiles.h"

#include <algorithm>
#include <string_view>

namespace qo::cli
{
namespace
{
using host::ExitCode;
using host::FileField;
using host::HostError;

/// Whether a word can be meant as "field=value".
bool looksLikeValue(const std::string& word)
{
    const std::size_t equals = word.find('=');
    const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    return equals != std::string::npos && equals > 0 &&
           std::all_of(word.begin(), word.begin() + static_cast<long>(equals), isLetter) &&
           !fileSystem().exists(fromSystemPath(host::absolutePath(word)));
}

const FileField& fieldOf(const std::string& name)
{
    if (const FileField* const field = host::findTagField(name))
        return *field;
    throw HostError(ExitCode::usage,
                    "\"" + name + "\" is no field of a tag" +
                        host::suggestionOrList(name, host::tagFieldNames()));
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// The beginning of "1969-07-21T20:17:40", up to one of its parts.
bool isDate(std::string_view value)
{
    constexpr std::string_view form = "0000-00-00T00:00:00";
    constexpr std::size_t lengths[] = {4, 7, 10, 13, 16, 19};
    return std::ranges::find(lengths, value.size()) != std::end(lengths) &&
           std::ranges::equal(value,
                              form.substr(0, value.size()),
                              [](char c, char wanted) {
                                  return wanted == '0' ? isDigit(c)
                                                       : c == wanted || (wanted == 'T' && c == ' ');
                              });
}

/// "3" or "3/12".
bool isTrackNumber(std::string_view value)
{
    const auto isNumber = [](std::string_view text)
    { return !text.empty() && text.size() <= 4 && std::ranges::all_of(text, isDigit); };
    const std::size_t slash = value.find('/');
    return isNumber(value.substr(0, slash)) &&
           (slash == value.npos || isNumber(value.substr(slash + 1)));
}

/// Players sort by years and track numbers, so that a slip of the finger does not go in.
void checkForm(const FileField& field, const std::string& value)
{
    const std::string name = field.name;
    if (value.empty())
        return;
    if (name == "year" && !isDate(value))
        throw HostError(ExitCode::usage,
                        "\"" + value + "\" is no year; write 1969, 1969-07 or 1969-07-21");
    if (name == "track" && !isTrackNumber(value))
        throw HostError(ExitCode::usage, "\"" + value + "\" is no track number; write 3 or 3/12");
}

/// A picture is kept as the absolute path of a file that is there.
std::string checkedValue(const FileField& field, const std::string& value)
{
    if (field.kind != host::FieldKind::path)
    {
        if (!isUtf8(value))
            throw HostError(ExitCode::usage,
                            std::string("the value of ") + field.name + " is not UTF-8");
        checkForm(field, value);
        return value;
    }
    if (value.empty())
        throw HostError(ExitCode::usage,
                        "a picture can be replaced but not removed: name a picture file, or see "
                        "\"qo cover remove\"");
    return checkedPicture(value);
}
} // namespace

TagWords TagWords::ofSet(const std::vector<std::string>& words)
{
    TagWords result;
    for (const std::string& word : words)
    {
        if (!looksLikeValue(word))
        {
            result.query.push_back(word);
            continue;
        }
        const std::size_t equals = word.find('=');
        const FileField& field = fieldOf(word.substr(0, equals));
        result.values.push_back({&field, checkedValue(field, word.substr(equals + 1))});
    }
    if (result.values.empty())
        throw HostError(ExitCode::usage,
                        "say what to set, as \"genre=Jazz\"; the fields are " +
                            host::listOf(host::tagFieldNames()));
    return result;
}

TagWords TagWords::ofRevert(const std::vector<std::string>& words)
{
    TagWords result;
    for (const std::string& word : words)
    {
        if (const FileField* const field = host::findTagField(word))
            result.values.push_back({field, {}});
        else
            result.query.push_back(word);
    }
    return result;
}
} // namespace qo::cli
