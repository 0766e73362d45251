#include "cli/files/TagFields.h"

#include "cli/shown/Output.h"
#include "cli/shown/Text.h"
#include "core/base/HostFiles.h"

#include <algorithm>

namespace qo::cli
{
namespace
{
using host::FileField;

constexpr auto original = CTagAttribValue::SV_Original;
constexpr auto edited = CTagAttribValue::SV_Edited;
constexpr std::size_t nameWidth = 9;
constexpr std::size_t widestValue = 40;

/// A value in a cell of the table: its first line, without control characters.
std::string cell(std::string text)
{
    const std::size_t lines =
        static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1;
    if (lines > 1)
        text = text.substr(0, text.find('\n')) + " … (" + std::to_string(lines) + " lines)";
    return harmless(text);
}
} // namespace

bool fieldValue(const CMusicTagEx& tag,
                const FileField& field,
                CTagAttrib::ESrcValueType source,
                std::string& value)
{
    CString text;
    const CTagAttrib* const attrib = tag.getConstAttrib(*field.attribute);
    if (!attrib || !attrib->getValue(source, text))
        return false;
    value = field.kind == host::FieldKind::path && !text.IsEmpty() ? host::shownPath(text)
                                                                   : toUtf8(text);
    return true;
}

void applyEdits(CMusicTagEx& tag, const host::PendingTags::Fields& edits)
{
    for (const FileField& field : host::tagFields())
    {
        const auto edit = edits.find(field.name);
        if (edit == edits.end())
            continue;
        const bool isPath = field.kind == host::FieldKind::path;
        const CString value =
            isPath && !edit->second.empty() ? fromSystemPath(edit->second) : fromUtf8(edit->second);
        if (CTagAttrib* const attrib = tag.getAttrib(*field.attribute))
            attrib->setValue(edited, value, true);
    }
}

Json tagJson(const CMusicTagEx& tag)
{
    Json fields = Json::object();
    for (const FileField& field : host::tagFields())
    {
        std::string value;
        Json entry = Json::object();
        entry["file"] = fieldValue(tag, field, original, value) ? Json(value) : Json();
        if (fieldValue(tag, field, edited, value))
            entry["edited"] = value;
        fields[field.name] = entry;
    }
    return fields;
}

std::string tagTable(const CMusicTagEx& tag)
{
    std::vector<std::string> own;
    std::vector<std::string> edits;
    std::size_t width = 4;
    bool anyEdit = false;
    for (const FileField& field : host::tagFields())
    {
        std::string value;
        own.push_back(fieldValue(tag, field, original, value) ? cell(value) : "");
        const bool isEdited = fieldValue(tag, field, edited, value);
        edits.push_back(isEdited ? (value.empty() ? "(removed)" : cell(value)) : "");
        anyEdit = anyEdit || isEdited;
        width = std::max(width, std::min(textWidth(own.back()), widestValue));
    }
    std::string table;
    if (anyEdit)
        table = padded("", nameWidth) + padded("file", width) + "  edited, not yet written\n";
    for (std::size_t i = 0; i < own.size(); ++i)
    {
        std::string row = padded(host::tagFields()[i].heading, nameWidth);
        row += edits[i].empty() ? own[i] : padded(own[i], width) + "  " + edits[i];
        row.erase(row.find_last_not_of(' ') + 1);
        table += row + "\n";
    }
    return table;
}
} // namespace qo::cli
