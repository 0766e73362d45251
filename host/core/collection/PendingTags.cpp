#include "core/collection/PendingTags.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/collection/CollectionFiles.h"
#include "core/collection/FileFields.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cerrno>
#include <unordered_set>

namespace qo::host
{
namespace
{
using nlohmann::json;

constexpr std::size_t largestEdits = 256U << 20;
constexpr int formatVersion = 1;

bool isFieldName(const std::string& name)
{
    const auto& names = PendingTags::fieldNames();
    return std::find(names.begin(), names.end(), name) != names.end();
}
} // namespace

const std::vector<std::string>& PendingTags::fieldNames()
{
    static const std::vector<std::string> names = []
    {
        std::vector<std::string> list;
        for (const FileField& field : tagFields())
            list.emplace_back(field.name);
        return list;
    }();
    return names;
}

PendingTags::PendingTags(const CString& file) : m_file(file)
{
    std::string text;
    const int error = readFile(file, largestEdits, text);
    if (error == ENOENT)
        return;
    if (error != 0)
        throw HostError(ExitCode::failed,
                        "the pending edits " + shownPath(file) +
                            " cannot be read: " + errorWords(error));
    if (parse(text))
        return;
    m_files.clear();
    const CString aside = freeName(file + u".unreadable-" + timeStampOfNow());
    if (const int moveError = fileSystem().moveFile(file, aside))
        throw HostError(ExitCode::failed,
                        shownPath(file) + " is no list of pending edits and cannot be renamed: " +
                            errorWords(moveError));
    m_complaint = shownPath(file) + " was no list of pending edits and is now " + shownPath(aside);
}

bool PendingTags::parse(const std::string& text)
{
    const json list = json::parse(text, nullptr, false);
    if (!list.is_object() || list.value("version", json()) != formatVersion ||
        !list.contains("files") || !list["files"].is_object())
        return false;
    for (const auto& [path, fields] : list["files"].items())
    {
        if (!fields.is_object())
            return false;
        for (const auto& [name, value] : fields.items())
        {
            if (!isFieldName(name) || !value.is_string())
                return false;
            m_files[path][name] = value.get<std::string>();
        }
    }
    return true;
}

std::vector<CString> PendingTags::paths() const
{
    std::vector<CString> list;
    for (const auto& [path, fields] : m_files)
        list.push_back(fromUtf8(path));
    return list;
}

PendingTags::Fields PendingTags::fields(const CString& path) const
{
    const auto found = m_files.find(toUtf8(path));
    return found == m_files.end() ? Fields() : found->second;
}

void PendingTags::set(const CString& path, const std::string& field, const std::string& value)
{
    m_files[toUtf8(path)][field] = value;
    m_isDirty = true;
}

bool PendingTags::drop(const CString& path, const std::string& field)
{
    const auto found = m_files.find(toUtf8(path));
    if (found == m_files.end())
        return false;
    const bool had = field.empty() ? !found->second.empty() : found->second.erase(field) > 0;
    if (field.empty() || found->second.empty())
        m_files.erase(found);
    m_isDirty = m_isDirty || had;
    return had;
}

void PendingTags::follow(const std::unordered_map<std::u16string, CString>& places)
{
    std::unordered_set<std::u16string> taken;
    for (const auto& [key, place] : places)
        taken.insert(pathKey(place));
    std::map<std::string, Fields> files;
    for (auto& [path, fields] : m_files)
    {
        const std::u16string key = pathKey(fromUtf8(path));
        const auto found = places.find(key);
        if (found == places.end() && !taken.contains(key))
            files[path] = std::move(fields);
        else if (found != places.end() && !found->second.IsEmpty())
            files[toUtf8(found->second)] = std::move(fields);
        m_isDirty = m_isDirty || found != places.end() || taken.contains(key);
    }
    m_files = std::move(files);
}

void PendingTags::save(bool anyhow)
{
    if (!m_isDirty && !anyhow)
        return;
    json list;
    list["version"] = formatVersion;
    list["files"] = m_files;
    const std::string text = list.dump(1) + "\n";
    if (const int error = fileSystem().replaceFile(m_file, text.data(), text.size()))
        throw HostError(ExitCode::failed,
                        "the pending edits " + shownPath(m_file) +
                            " cannot be written: " + errorWords(error));
    m_isDirty = false;
}
} // namespace qo::host
