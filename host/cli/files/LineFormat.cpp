#include "cli/files/LineFormat.h"

#include "cli/files/FileRecord.h"
#include "cli/shown/Text.h"
#include "core/base/ClosestName.h"
#include "core/base/HostError.h"
#include "core/collection/FileFields.h"

#include <charconv>

namespace qo::cli
{
namespace
{
using host::ExitCode;
using host::FileField;
using host::HostError;

std::vector<std::string> fieldNames()
{
    std::vector<std::string> names;
    for (const FileField& field : host::fileFields())
    {
        if (field.source != host::FieldSource::tag)
            names.emplace_back(field.name);
    }
    return names;
}

[[noreturn]] void refuse(const std::string& why)
{
    throw HostError(ExitCode::usage, "the format cannot be read: " + why);
}
} // namespace

LineFormat::LineFormat(const std::string& typed)
{
    Part part;
    for (std::size_t i = 0; i < typed.size(); ++i)
    {
        const char c = typed[i];
        if ((c == '{' || c == '}') && typed.compare(i + 1, 1, std::string(1, c)) == 0)
        {
            part.text += c;
            ++i;
        }
        else if (c == '{')
        {
            const std::size_t end = typed.find('}', i);
            if (end == std::string::npos)
                refuse("a brace is not closed");
            addField(typed.substr(i + 1, end - i - 1), part);
            part = {};
            i = end;
        }
        else if (c == '}')
            refuse("a brace is closed that was not opened; \"}}\" is one");
        else
            part.text += c;
    }
    m_parts.push_back(std::move(part));
}

void LineFormat::addField(const std::string& typed, Part& part)
{
    const std::size_t colon = typed.find(':');
    const std::string name = typed.substr(0, colon);
    part.field = host::findFileField(name);
    if (!part.field || part.field->source == host::FieldSource::tag)
        refuse("there is no field \"" + name + "\"" + host::suggestionOrList(name, fieldNames()));
    if (colon != std::string::npos)
    {
        std::string_view width = std::string_view(typed).substr(colon + 1);
        part.toTheRight = width.starts_with('>');
        width.remove_prefix(part.toTheRight ? 1 : 0);
        const auto [end, error] =
            std::from_chars(width.data(), width.data() + width.size(), part.width);
        constexpr std::size_t widest = 1000;
        if (error != std::errc() || end != width.data() + width.size() || part.width == 0 ||
            part.width > widest)
            refuse("\"" + typed + "\" has no width of 1 to 1000 after its colon");
    }
    m_parts.push_back(std::move(part));
}

std::string LineFormat::lineOf(const QoFileDbItem& item, host::KnownNotes& notes) const
{
    std::string line;
    for (const Part& part : m_parts)
    {
        line += part.text;
        if (!part.field)
            continue;
        const std::string value = fieldText(*part.field, item, notes);
        const std::size_t width = textWidth(value);
        if (part.width == 0)
            line += value;
        else if (part.toTheRight && width < part.width)
            line += std::string(part.width - width, ' ') + value;
        else
            line += padded(value, part.width);
    }
    return line;
}
} // namespace qo::cli
