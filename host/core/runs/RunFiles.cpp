#include "core/runs/RunFiles.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/session/Session.h"

#include <algorithm>
#include <cerrno>

namespace qo::host::runfiles
{
namespace
{
constexpr std::size_t stampLength = 15; ///< of the time that an id begins with

CString folder()
{
    return Session::folder() + u"\\reorganize";
}

/// What is not there needs no other name.
void rename(const std::string& from, const std::string& to)
{
    const bool isThere = !from.empty() && fileSystem().exists(fromSystemPath(from));
    const int error = isThere ? fileSystem().moveFile(fromSystemPath(from), fromSystemPath(to)) : 0;
    if (error != 0)
        throw HostError(ExitCode::failed,
                        from + " cannot be renamed to " + to + ": " + errorWords(error));
}
} // namespace

std::string pathOf(const std::string& id, const char* end)
{
    return toSystemPath(folder()) + "/" + id + end;
}

bool exists(const std::string& path)
{
    return fileSystem().exists(fromSystemPath(path));
}

bool isId(const std::string& text)
{
    return !text.empty() && text.size() <= 64 &&
           std::all_of(
               text.begin(), text.end(), [](char c) { return (c >= '0' && c <= '9') || c == '-'; });
}

bool isOlder(const std::string& a, const std::string& b)
{
    const int order = a.compare(0, stampLength, b, 0, stampLength);
    if (order != 0)
        return order < 0;
    return a.size() != b.size() ? a.size() < b.size() : a < b;
}

std::vector<std::string> idsOf(const std::string& end)
{
    std::vector<DirEntry> entries;
    const int error = fileSystem().list(folder(), entries);
    if (error != 0 && error != ENOENT)
        throw HostError(ExitCode::failed,
                        "the folder " + shownPath(folder()) +
                            " cannot be read: " + errorWords(error));
    std::vector<std::string> ids;
    for (const DirEntry& entry : entries)
    {
        const std::string name = toUtf8(entry.name);
        if (name.ends_with(end) && isId(name.substr(0, name.size() - end.size())))
            ids.push_back(name.substr(0, name.size() - end.size()));
    }
    std::sort(ids.begin(), ids.end(), isOlder);
    return ids;
}

std::string journalOf(const std::string& id)
{
    for (const char* end : {runningEnd, finishedEnd})
    {
        if (exists(pathOf(id, end)))
            return pathOf(id, end);
    }
    return {};
}

void makeFolder()
{
    if (const int error = fileSystem().makeDirectories(folder()))
        throw HostError(ExitCode::failed,
                        "the folder " + shownPath(folder()) +
                            " cannot be made: " + errorWords(error));
}

std::string newId()
{
    makeFolder();
    std::string wanted = toUtf8(timeStamp(systemClock().localTime()));
    std::replace(wanted.begin(), wanted.end(), '_', '-');
    std::string youngest;
    for (const char* end : {planEnd, runningEnd, finishedEnd, forgottenEnd})
    {
        for (const std::string& id : idsOf(end))
            youngest = isOlder(youngest, id) ? id : youngest;
    }
    if (isOlder(youngest, wanted))
        return wanted;
    wanted = youngest.substr(0, stampLength);
    std::string id = wanted;
    for (int count = 2; !isOlder(youngest, id); ++count)
        id = wanted + "-" + std::to_string(count);
    return id;
}

void dropOldPlans()
{
    constexpr std::size_t kept = 10;
    std::vector<std::string> ids = idsOf(planEnd);
    std::erase_if(ids, [](const std::string& id) { return !journalOf(id).empty(); });
    for (std::size_t i = 0; i + kept < ids.size(); ++i)
        fileSystem().removeFile(fromSystemPath(pathOf(ids[i], planEnd)));
}

void close(const std::string& id)
{
    rename(pathOf(id, runningEnd), pathOf(id, finishedEnd));
}

void forget(const std::string& id)
{
    rename(journalOf(id), pathOf(id, forgottenEnd));
}

std::string timeOf(const std::string& id)
{
    if (id.size() < stampLength)
        return {};
    return id.substr(0, 4) + "-" + id.substr(4, 2) + "-" + id.substr(6, 2) + " " + id.substr(9, 2) +
           ":" + id.substr(11, 2) + ":" + id.substr(13, 2);
}
} // namespace qo::host::runfiles
