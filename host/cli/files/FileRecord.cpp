#include "cli/files/FileRecord.h"

#include "cli/shown/Output.h"
#include "cli/shown/Text.h"
#include "core/base/HostFiles.h"
#include "core/collection/FileFields.h"

#include <utility>

namespace qo::cli
{
namespace
{
using host::FieldKind;
using host::FieldSource;
using host::FileField;
using host::JsonLine;
using host::KnownNotes;

/// "3.5" of seven half stars; "" for none.
std::string starsText(std::int64_t halfStars)
{
    return halfStars == 0 ? "" : std::to_string(halfStars / 2) + (halfStars % 2 == 0 ? "" : ".5");
}

/// As it stands between tabs; a path with the exact bytes of its names.
std::string valueCell(const FileField& field, const host::FieldValue& value)
{
    if (const FILETIME* const time = std::get_if<FILETIME>(&value))
        return isoTime(*time);
    if (const std::int64_t* const number = std::get_if<std::int64_t>(&value))
        return field.kind == FieldKind::stars ? starsText(*number) : std::to_string(*number);
    const CString& text = std::get<CString>(value);
    if (field.kind == FieldKind::path && !text.IsEmpty())
        return host::shownPath(text);
    return oneLine(text);
}

/// As it stands in a line of one's own format: short, and the same for every reader.
std::string shortText(const FileField& field, const host::FieldValue& value)
{
    const std::int64_t* const number = std::get_if<std::int64_t>(&value);
    if (number && field.kind == FieldKind::duration)
        return *number > 0 ? durationText(*number) : "";
    return harmless(valueCell(field, value));
}

std::string numberText(FieldKind kind, std::int64_t number)
{
    switch (kind)
    {
    case FieldKind::duration:
        return number <= 0 ? "" : durationText(number) + " (" + std::to_string(number) + " ms)";
    case FieldKind::bitrate:
        return number <= 0 ? "" : std::to_string(number) + " kbit/s";
    case FieldKind::size:
        return sizeText(number) + " (" + std::to_string(number) + " bytes)";
    case FieldKind::flags:
        return flagsText(static_cast<unsigned>(number));
    case FieldKind::yesNo:
        return number != 0 ? "yes" : "no";
    case FieldKind::stars:
        return starsText(number);
    default:
        return std::to_string(number);
    }
}

/// As people read it; "" for no value.
std::string valueText(const FileField& field, const host::FieldValue& value)
{
    if (const FILETIME* const time = std::get_if<FILETIME>(&value))
        return localTimeText(*time);
    if (const std::int64_t* const number = std::get_if<std::int64_t>(&value))
        return numberText(field.kind, *number);
    return harmless(valueCell(field, value));
}

/// What costs no search.
bool isListed(const FileField& field)
{
    return field.source == FieldSource::record || field.source == FieldSource::note;
}

/// A path; one that is no UTF-8 is shown with U+FFFD, and nameUri has its exact bytes.
void putPath(JsonLine& line, const std::string& name, const CString& path)
{
    const std::string shown = path.IsEmpty() ? std::string() : host::shownPath(path);
    line.text(name, shown);
    if (!isUtf8(shown))
        line.text(name + "Uri", fileUri(shown));
}

void putValue(JsonLine& line, const FileField& field, const host::FieldValue& value)
{
    if (const CString* const text = std::get_if<CString>(&value))
        return field.kind == FieldKind::path ? putPath(line, field.name, *text)
                                             : line.text(field.name, text->view());
    if (const FILETIME* const time = std::get_if<FILETIME>(&value))
        return toTicks(*time) == 0 ? line.raw(field.name, "null")
                                   : line.raw(field.name, '"' + isoTime(*time) + '"');
    const std::int64_t number = std::get<std::int64_t>(value);
    if (field.kind == FieldKind::yesNo)
        return line.raw(field.name, number != 0 ? "true" : "false");
    if (field.kind == FieldKind::stars)
        return line.raw(field.name, number == 0 ? "null" : starsText(number));
    line.number(field.name, number);
}
} // namespace

void putPath(Json& object, const std::string& name, const std::string& path)
{
    object[name] = path;
    if (isUtf8(path))
        return;
    object[name] = toUtf8(fromUtf8(path));
    object[name + "Uri"] = fileUri(path);
}

void putPath(Json& object, const std::string& name, const CString& path)
{
    putPath(object, name, path.IsEmpty() ? std::string() : host::shownPath(path));
}

void putRecord(JsonLine& line, const QoFileDbItem& item, KnownNotes& notes, bool withTree)
{
    for (const FileField& field : host::fileFields())
    {
        if (isListed(field) || (field.source == FieldSource::tree && withTree))
            putValue(line, field, field.read(item, notes));
    }
}

std::string fieldText(const FileField& field, const QoFileDbItem& item, KnownNotes& notes)
{
    return shortText(field, field.read(item, notes));
}

std::string recordHeader()
{
    std::string header;
    for (const FileField& field : host::fileFields())
    {
        if (isListed(field))
            header += (header.empty() ? "" : "\t") + std::string(field.name);
    }
    return header;
}

std::string recordRow(const QoFileDbItem& item, KnownNotes& notes)
{
    std::string row;
    bool isFirst = true;
    for (const FileField& field : host::fileFields())
    {
        if (!isListed(field))
            continue;
        row += isFirst ? "" : "\t";
        isFirst = false;
        const std::string cell = valueCell(field, field.read(item, notes));
        row += field.kind == FieldKind::path ? harmless(cell) : cell;
    }
    return row;
}

std::string recordText(const QoFileDbItem& item, KnownNotes& notes)
{
    constexpr std::size_t headingWidth = 14;
    std::string text;
    for (const FileField& field : host::fileFields())
    {
        if (field.source == FieldSource::tag || field.name == std::string_view("path"))
            continue;
        const std::string value = valueText(field, field.read(item, notes));
        text += padded(field.heading, headingWidth) + (value.empty() ? "-" : value) + "\n";
    }
    return text;
}

std::string artistAndTitle(const CString& artist, const CString& title)
{
    return oneLine(artist) + (artist.IsEmpty() || title.IsEmpty() ? "" : " - ") + oneLine(title);
}

std::string flagsText(unsigned flags)
{
    constexpr std::pair<unsigned, const char*> names[] = {{fileFlag::audio, "audio"},
                                                          {fileFlag::video, "video"},
                                                          {fileFlag::music, "music"},
                                                          {fileFlag::notMusic, "no music"},
                                                          {fileFlag::purchased, "purchased"}};
    std::string text;
    for (const auto& [bit, name] : names)
    {
        if ((flags & bit) != 0)
            text += (text.empty() ? "" : ", ") + std::string(name);
    }
    return text.empty() ? "none" : text;
}
} // namespace qo::cli
