#pragma once

#include <QoKernel/Collection.h>
#include <QoKernel/Tags.h>

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace qo::host
{
class KnownNotes;

/// What the value of a field is, which decides how it is shown.
enum class FieldKind
{
    text,     ///< CString
    path,     ///< CString in collection form; "" for none
    number,   ///< std::int64_t, as are all of the following but the last
    duration, ///< milliseconds
    bitrate,  ///< kbit/s
    size,     ///< bytes
    flags,    ///< the bits of fileFlag
    yesNo,    ///< 0 or 1
    stars,    ///< half stars, 1 to 10; 0 for none
    time      ///< FILETIME
};

using FieldValue = std::variant<CString, std::int64_t, FILETIME>;

/// Where a field's value comes from, apart from the tag of the file.
enum class FieldSource
{
    tag,    ///< from nowhere else
    record, ///< the record of the collection
    note,   ///< what the host's store has beside the record
    tree    ///< the record's place in the loaded collection, which costs a search: not for lists
};

/// A field of a file, as lists, JSON, `qo info`, `qo tag` and docs/fields.md show it.
struct FileField
{
    const char* name;    ///< key in JSON, column with --long, word of "qo tag set"
    const char* heading; ///< what people read
    FieldKind kind;
    FieldSource source;
    /// The value; null for FieldSource::tag. On the kernel's thread.
    FieldValue (*read)(const QoFileDbItem& item, KnownNotes& notes);
    /// The attribute of a tag that holds it. A field with one can be edited and written: texts as
    /// they are, a path as the picture that lies there.
    std::optional<CTagAttrib::EAttribType> attribute = std::nullopt;
};

/// Every field, in the order in which lists and people get them.
const std::vector<FileField>& fileFields();
/// The one with that name, or null.
const FileField* findFileField(std::string_view name);
/// What the field "type" may be.
constexpr std::array<const char*, 5> fileTypes = {"music", "video", "picture", "text", "other"};
/// Those that a tag has.
const std::vector<FileField>& tagFields();
/// The field of a tag with that name, or null.
const FileField* findTagField(std::string_view name);
std::vector<std::string> tagFieldNames();
} // namespace qo::host
