#include "cli/files/TagFields.h"

#include "cli/CommandLine.h"
#include "cli/shown/Output.h"
#include "cli/shown/Text.h"
#include "core/base/HostFiles.h"

#include <algorithm>
#include <cerrno>

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

void throwUnlessRead(const CString& path, bool isRead, const CString& cause)
{
    if (!isRead)
        throw HostError(ExitCode::failed,
                        "the tag of " + host::shownPath(path) +
                            " cannot be read: " + host::plainWords(cause));
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

void checkMusicFile(const CString& path)
{
    const std::string shown = host::shownPath(path);
    FileInfo info;
    if (const int error = fileSystem().info(path, Spelling::exact, info))
        throw HostError(error == ENOENT || error == ENOTDIR ? ExitCode::notFound : ExitCode::failed,
                        shown + " cannot be read: " + host::errorWords(error));
    if (info.kind != FileKind::regular)
        throw HostError(ExitCode::failed, shown + " is no regular file");
    if (!CMusicTagEx::fileSupportsTags(path))
        throw HostError(ExitCode::failed, shown + " is no kind of file that has a tag");
}

void readFileTag(const CString& path, CMusicTagEx& tag)
{
    checkMusicFile(path);
    CString cause;
    throwUnlessRead(path, tag.readTag(path, &cause), cause);
}

void readFileTag(const CString& path, KVTagLib::CTags& tags)
{
    checkMusicFile(path);
    CString cause;
    throwUnlessRead(path, CMusicTagEx::readTag(path, tags, &cause), cause);
}

std::string checkedPicture(const std::string& typed)
{
    const std::string path = host::absolutePath(typed);
    FileInfo info;
    const int error = fileSystem().info(fromSystemPath(path), Spelling::exact, info);
    if (error != 0 || info.kind != FileKind::regular)
        throw HostError(ExitCode::notFound,
                        "the picture " + typed + " cannot be read: " +
                            (error ? host::errorWords(error) : "it is no regular file"));
    if (!isUtf8(path))
        throw HostError(ExitCode::usage, "the name of a picture must be UTF-8");
    if (!KVTagLib::CTags().AddPicture(fromSystemPath(path)))
        throw HostError(ExitCode::failed,
                        "the picture " + typed +
                            " cannot be used: it must be readable, at most 32 MiB, and a JPEG, "
                            "PNG, GIF, BMP or WebP picture");
    return path;
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

std::optional<KVTagLib::Field> fieldInTag(const FileField& field)
{
    // The attributes of texts are numbered from one in the order of the tag library's fields.
    const int index = *field.attribute - CTagAttrib::AT_Artist;
    if (index >= KVTagLib::fieldCount)
        return {};
    return static_cast<KVTagLib::Field>(index);
}

KVTagLib::CTags allValues(const CString& path)
{
    KVTagLib::CTags all(CString(), KVTagLib::TagExtent::everything);
    CMusicTagEx::readTag(path, all);
    return all;
}

std::vector<std::string>
fileValues(const CMusicTagEx& tag, const KVTagLib::CTags& all, const FileField& field)
{
    std::vector<std::string> values;
    if (const auto inTag = fieldInTag(field))
    {
        for (CString value : all.GetValues(*inTag))
            values.push_back(toUtf8(value.Trim()));
    }
    std::string value;
    if (values.empty() && fieldValue(tag, field, original, value))
        values.push_back(value);
    return values;
}

Json tagJson(const CMusicTagEx& tag, const KVTagLib::CTags& all)
{
    Json fields = Json::object();
    for (const FileField& field : host::tagFields())
    {
        const std::vector<std::string> values = fileValues(tag, all, field);
        std::string value;
        Json entry = Json::object();
        entry["file"] = values.empty() ? Json() : Json(values.front());
        if (values.size() > 1)
            entry["values"] = values;
        if (fieldValue(tag, field, edited, value))
            entry["edited"] = value;
        fields[field.name] = entry;
    }
    return fields;
}

std::string tagTable(const CMusicTagEx& tag, const KVTagLib::CTags& all)
{
    struct Row
    {
        std::string heading;
        std::string own;
        std::string edit = {};
    };
    std::vector<Row> rows;
    std::size_t width = 4;
    bool anyEdit = false;
    for (const FileField& field : host::tagFields())
    {
        const std::size_t first = rows.size();
        for (const std::string& own : fileValues(tag, all, field))
            rows.push_back({rows.size() == first ? field.heading : "", cell(own)});
        if (rows.size() == first)
            rows.push_back({field.heading, ""});
        std::string value;
        if (fieldValue(tag, field, edited, value))
            rows[first].edit = value.empty() ? "(removed)" : cell(value);
        anyEdit = anyEdit || !rows[first].edit.empty();
        for (std::size_t i = first; i < rows.size(); ++i)
            width = std::max(width, std::min(textWidth(rows[i].own), widestValue));
    }
    std::string table;
    if (anyEdit)
        table = padded("", nameWidth) + padded("file", width) + "  edited, not yet written\n";
    for (const auto& [heading, own, edit] : rows)
    {
        std::string row = padded(heading, nameWidth);
        row += edit.empty() ? own : padded(own, width) + "  " + edit;
        row.erase(row.find_last_not_of(' ') + 1);
        table += row + "\n";
    }
    return table;
}
} // namespace qo::cli
