#include "core/store/OldFiles.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/base/Json.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <sstream>
#include <string_view>

namespace qo::host::oldFiles
{
namespace
{
using nlohmann::json;

constexpr std::size_t largestEdits = 256U << 20;
constexpr std::size_t largestHeads = std::size_t(1) << 30;
constexpr std::size_t largestMark = 1 << 20;

bool parseFields(const json& list, EditedFile& file)
{
    if (!list.is_object())
        return false;
    for (const auto& [name, value] : list.items())
    {
        if (!value.is_string())
            return false;
        file.fields[name] = value.get<std::string>();
    }
    return true;
}
} // namespace

CString stateOf(const CString& file)
{
    FileInfo info;
    if (fileSystem().info(file, Spelling::exact, info) != 0 || info.size == 0)
        return {};
    return fromUtf8(std::to_string(info.size) + ":" + std::to_string(toTicks(info.modified)));
}

bool readEdits(const CString& file, std::vector<EditedFile>& edits)
{
    std::string text;
    if (const int error = readFile(file, largestEdits, text))
        throw HostError(ExitCode::failed,
                        "the pending edits " + shownPath(file) +
                            " cannot be read: " + errorWords(error));
    const json list = json::parse(text, nullptr, false);
    if (!list.is_object() || list.value("version", json()) != 1 || !list.contains("files") ||
        !list["files"].is_object())
        return false;
    for (const auto& [path, fields] : list["files"].items())
    {
        EditedFile file;
        file.path = fromUtf8(path);
        if (!parseFields(fields, file))
            return false;
        edits.push_back(std::move(file));
    }
    return true;
}

std::vector<StoredHead> readHeads(const CString& file)
{
    std::vector<StoredHead> heads;
    std::string text;
    if (readFile(file, largestHeads, text) != 0)
        return heads;
    std::istringstream lines(text);
    std::string line;
    if (!std::getline(lines, line) || line != "velmora-heads 1")
        return heads;
    while (std::getline(lines, line))
    {
        std::istringstream words(line);
        StoredHead head;
        std::string digest;
        if (!(words >> head.id >> head.size >> head.modified >> digest))
            continue;
        const char* const end = digest.data() + digest.size();
        const auto [next, error] = std::from_chars(digest.data(), end, head.digest, 16);
        if (error == std::errc() && next == end)
            heads.push_back(std::move(head));
    }
    return heads;
}

ScanMark readMark(const CString& file)
{
    constexpr std::string_view namesSince = "names since ";
    ScanMark mark;
    std::string content;
    if (readFile(file, largestMark, content) != 0)
        return mark;
    for (std::size_t start = 0; start < content.size();)
    {
        const std::size_t end = std::min(content.find('\0', start), content.size());
        const std::string entry = content.substr(start, end - start);
        const CString root = fromUtf8(entry);
        if (entry.starts_with(namesSince))
            mark.lastSave = std::strtoll(entry.c_str() + namesSince.size(), nullptr, 10);
        else if (CQoCollPath(root).isValid())
            mark.roots.Add(root);
        start = end + 1;
    }
    return mark;
}
} // namespace qo::host::oldFiles
