#include "cli/files/FileRecord.h"

#include "cli/shown/Text.h"
#include "core/base/HostFiles.h"

#include <utility>

namespace qo::cli
{
namespace
{
Json timeJson(const FILETIME& time)
{
    const std::string text = isoTime(time);
    return text.empty() ? Json() : Json(text);
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

Json recordJson(const QoFileDbItem& item)
{
    Json object;
    putPath(object, "path", item.path);
    object["artist"] = toUtf8(item.artist);
    object["album"] = toUtf8(item.album);
    object["title"] = toUtf8(item.title);
    object["genre"] = toUtf8(item.genre);
    object["track"] = toUtf8(item.trackNumber);
    object["year"] = toUtf8(item.year);
    object["duration"] = item.duration;
    object["bitrate"] = item.bitrate;
    object["size"] = item.size;
    object["flags"] = item.flags;
    object["created"] = timeJson(item.createTime);
    object["modified"] = timeJson(item.modifTime);
    object["id"] = item.id;
    object["velmoraId"] = toUtf8(item.velmoraId);
    object["source"] = static_cast<int>(item.source);
    object["imported"] = item.imported;
    object["reviewed"] = item.reviewed;
    putPath(object, "picture", item.picturePath);
    return object;
}

std::string recordHeader()
{
    return "path\tartist\talbum\ttitle\tgenre\ttrack\tyear\tduration\tbitrate\tsize\tflags\tcreated"
           "\tmodified\t"
           "id\tvelmoraId\tsource\timported\treviewed\tpicture";
}

std::string recordRow(const QoFileDbItem& item, const std::string& shownPath)
{
    std::string row = shownPath;
    for (const CString* text :
         {&item.artist, &item.album, &item.title, &item.genre, &item.trackNumber, &item.year})
        row += "\t" + oneLine(*text);
    for (const std::int64_t number :
         {std::int64_t{item.duration}, std::int64_t{item.bitrate}, item.size})
        row += "\t" + std::to_string(number);
    row += "\t" + std::to_string(item.flags) + "\t" + isoTime(item.createTime) + "\t" +
           isoTime(item.modifTime);
    row += "\t" + std::to_string(item.id) + "\t" + oneLine(item.velmoraId) + "\t" +
           std::to_string(item.source);
    row += item.imported ? "\t1" : "\t0";
    row += item.reviewed ? "\t1\t" : "\t0\t";
    return row + (item.picturePath.IsEmpty() ? "" : host::shownPath(item.picturePath));
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

std::string dump(const Json& object)
{
    return object.dump(-1, ' ', false, Json::error_handler_t::replace);
}
} // namespace qo::cli
