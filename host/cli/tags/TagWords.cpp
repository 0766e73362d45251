#include "cli/tags/TagWords.h"

#include "cli/files/TagFields.h"
#include "core/base/ClosestName.h"
#include "core/base/HostError.h"
#include "core/base/HostFiles.h"

#include <algorithm>
#include <regex>

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
    std::vector<std::string> names;
    for (const FileField& field : host::tagFields())
        names.emplace_back(field.name);
    throw HostError(ExitCode::usage,
                    "\"" + name + "\" is no field of a tag" + host::suggestionOrList(name, names));
}

/// Players sort by years and track numbers, so that a slip of the finger does not go in.
void checkForm(const FileField& field, const std::string& value)
{
    static const std::regex year("[0-9]{4}(-[0-9]{2}(-[0-9]{2}([T ][0-9]{2}(:[0-9]{2}){0,2})?)?)?");
    static const std::regex track("[0-9]{1,4}(/[0-9]{1,4})?");
    const std::string name = field.name;
    if (value.empty())
        return;
    if (name == "year" && !std::regex_match(value, year))
        throw HostError(ExitCode::usage,
                        "\"" + value + "\" is no year; write 1969, 1969-07 or 1969-07-21");
    if (name == "track" && !std::regex_match(value, track))
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
                        "say what to set, as \"genre=Jazz\"; the fields are " + tagFieldNames());
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

std::string tagFieldNames()
{
    std::string names;
    for (const FileField& field : host::tagFields())
        names += (names.empty() ? "" : ", ") + std::string(field.name);
    return names;
}
} // namespace qo::cli
