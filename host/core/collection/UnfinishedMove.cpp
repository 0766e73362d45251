#include "core/collection/UnfinishedMove.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/base/Json.h"

namespace qo::host
{
namespace
{
using nlohmann::json;

constexpr std::size_t largestNote = std::size_t(64) << 10;
constexpr const char* stagingStart = ".qo-";

CString fileIn(const CString& folder)
{
    return folder + u"\\unfinished-move";
}
} // namespace

UnfinishedMove::UnfinishedMove(const CString& folder) : m_folder(folder) {}

UnfinishedMove::~UnfinishedMove()
{
    if (m_isBegun)
        forget(m_folder);
}

void UnfinishedMove::begin(const CString& from, const CString& to, const std::string& staging)
{
    FileMark mark;
    // Without a source there is nothing that could be left half-way.
    if (markOf(toSystemPath(from), mark) != 0)
        return;
    const std::string text = json{
        {"from", pathInText(toSystemPath(from))},
        {"to", pathInText(toSystemPath(to))},
        {"staging", staging},
        {"device", mark.device},
        {"inode", mark.inode},
        {"size", mark.size},
        {"modified",
         mark.modified}}.dump();
    if (const int error = fileSystem().replaceFile(fileIn(m_folder), text.data(), text.size()))
        throw HostError(ExitCode::failed,
                        "the file " + shownPath(fileIn(m_folder)) +
                            " cannot be written, so nothing is moved: " + errorWords(error));
    m_isBegun = true;
}

bool UnfinishedMove::wasLeft(const CString& folder)
{
    return fileSystem().exists(fileIn(folder));
}

bool UnfinishedMove::read(const CString& folder, Left& left)
{
    std::string text;
    if (readFile(fileIn(folder), largestNote, text) != 0)
        return false;
    const json note = json::parse(text, nullptr, false);
    if (!note.is_object())
        return false;
    const auto path = [&note](const char* name)
    {
        const auto value = note.find(name);
        return value != note.end() && value->is_string()
                   ? fromSystemPath(pathFromText(value->get<std::string>()))
                   : CString();
    };
    const auto number = [&note](const char* name)
    {
        const auto value = note.find(name);
        return value != note.end() && value->is_number_unsigned() ? value->get<std::uint64_t>() : 0;
    };
    left.from = path("from");
    left.to = path("to");
    left.mark.device = number("device");
    left.mark.inode = number("inode");
    left.mark.size = static_cast<std::int64_t>(number("size"));
    left.mark.modified = static_cast<std::int64_t>(number("modified"));
    const auto staging = note.find("staging");
    left.staging = staging != note.end() && staging->is_string() ? staging->get<std::string>() : "";
    return !left.from.IsEmpty() && !left.to.IsEmpty() && left.mark.inode != 0 &&
           left.staging.starts_with(stagingStart) && left.staging.find('/') == std::string::npos;
}

void UnfinishedMove::forget(const CString& folder)
{
    (void)fileSystem().removeFile(fileIn(folder));
}
} // namespace qo::host
