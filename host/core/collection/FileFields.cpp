#include "core/collection/FileFields.h"

#include "core/collection/KnownNotes.h"

#include <QoKernel/Physical.h>

#include <algorithm>
#include <type_traits>

namespace qo::host
{
namespace
{
/// The value of a member.
template <auto member>
FieldValue valueOf(const auto& row)
{
    using Member = std::remove_cvref_t<decltype(row.*member)>;
    if constexpr (std::is_same_v<Member, CString> || std::is_same_v<Member, FILETIME>)
        return row.*member;
    else if constexpr (std::is_same_v<Member, FilePath> || std::is_same_v<Member, LastingId>)
        return (row.*member).text();
    else
        return static_cast<std::int64_t>(row.*member);
}

template <auto member>
FieldValue stored(const QoFileDbItem& item, KnownNotes&)
{
    return valueOf<member>(item);
}

template <auto member>
FieldValue noted(const QoFileDbItem& item, KnownNotes& notes)
{
    return valueOf<member>(notes.of(item));
}

boost::shared_ptr<CHDFile> fileOf(const QoFileDbItem& item)
{
    return CQoCollection::m_ownCollection.getFileByPath(item.path);
}

FieldValue typeInTree(const QoFileDbItem& item, KnownNotes&)
{
    const auto file = fileOf(item);
    if (!file)
        return CString();
    switch (file->getFileType())
    {
    case CHDFile::FT_Music:
        return CString(file->getAudioVideoType() == CHDFile::AV_Video ? u"video" : u"music");
    case CHDFile::FT_Picture:
        return CString(u"picture");
    case CHDFile::FT_Text:
        return CString(u"text");
    default:
        return CString(u"other");
    }
}

FieldValue folderInTree(const QoFileDbItem& item, KnownNotes&)
{
    const auto file = fileOf(item);
    return file && file->getParentDir() ? file->getParentDir()->getPath().toString() : CString();
}

FieldValue rootInTree(const QoFileDbItem& item, KnownNotes&)
{
    const auto file = fileOf(item);
    const auto root = file ? CQoUtils::getRootDir(file) : nullptr;
    return root ? root->getPath().toString() : CString();
}

const FileField* fieldIn(const std::vector<FileField>& fields, std::string_view name)
{
    const auto found = std::ranges::find(fields, name, &FileField::name);
    return found == fields.end() ? nullptr : &*found;
}
} // namespace

const std::vector<FileField>& fileFields()
{
    using Item = QoFileDbItem;
    using Notes = FileNotes;
    using enum FieldKind;
    using enum FieldSource;
    using enum CTagAttrib::EAttribType;
    // clang-format off
    static const std::vector<FileField> fields = {
        {"path",      "path",       path,     record, stored<&Item::path>},
        {"artist",    "artist",     text,     record, stored<&Item::artist>,       AT_Artist},
        {"album",     "album",      text,     record, stored<&Item::album>,        AT_Album},
        {"title",     "title",      text,     record, stored<&Item::title>,        AT_Title},
        {"genre",     "genre",      text,     record, stored<&Item::genre>,        AT_Genre},
        {"track",     "track",      text,     record, stored<&Item::trackNumber>,  AT_TrackNumber},
        {"year",      "year",       text,     record, stored<&Item::year>,         AT_Year},
        {"lyrics",    "lyrics",     text,     tag,    nullptr,                     AT_Lyrics},
        {"duration",  "duration",   duration, record, stored<&Item::duration>},
        {"bitrate",   "bitrate",    bitrate,  record, stored<&Item::bitrate>},
        {"size",      "size",       size,     record, stored<&Item::size>},
        {"type",      "type",       text,     tree,   typeInTree},
        {"flags",     "flags",      flags,    record, stored<&Item::flags>},
        {"created",   "created",    time,     record, stored<&Item::createTime>},
        {"modified",  "modified",   time,     record, stored<&Item::modifTime>},
        {"id",        "id",         number,   record, stored<&Item::id>},
        {"velmoraId", "lasting id", text,     record, stored<&Item::velmoraId>},
        {"source",    "source",     number,   record, stored<&Item::source>},
        {"imported",  "imported",   yesNo,    record, stored<&Item::imported>},
        {"reviewed",  "reviewed",   yesNo,    record, stored<&Item::reviewed>},
        {"picture",   "picture",    path,     record, stored<&Item::picturePath>,  AT_Picture},
        {"albumArtist", "album artist", text, note, noted<&Notes::albumArtist>},
        {"disc",      "disc",       text,     note,   noted<&Notes::disc>},
        {"comment",   "comment",    text,     note,   noted<&Notes::comment>},
        {"rating",    "rating",     stars,    note,   noted<&Notes::rating>},
        {"plays",     "plays",      number,   note,   noted<&Notes::plays>},
        {"lastPlayed", "last played", time,   note,   noted<&Notes::lastPlayed>},
        {"addedBy",   "added by",   text,     note,   noted<&Notes::addedBy>},
        {"folder",    "folder",     path,     tree,   folderInTree},
        {"root",      "root",       path,     tree,   rootInTree}};
    // clang-format on
    return fields;
}

const std::vector<FileField>& tagFields()
{
    static const std::vector<FileField> fields = []
    {
        std::vector<FileField> list;
        for (const FileField& field : fileFields())
        {
            if (field.attribute)
                list.push_back(field);
        }
        return list;
    }();
    return fields;
}

const FileField* findFileField(std::string_view name)
{
    return fieldIn(fileFields(), name);
}

const FileField* findTagField(std::string_view name)
{
    return fieldIn(tagFields(), name);
}

std::vector<std::string> tagFieldNames()
{
    std::vector<std::string> names;
    for (const FileField& field : tagFields())
        names.emplace_back(field.name);
    return names;
}
} // namespace qo::host
