#include "cli/tags/TagWriting.h"

#include "cli/Interrupt.h"
#include "cli/KernelCommand.h"
#include "cli/files/FileRecord.h"
#include "cli/shown/Text.h"
#include "core/base/HostFiles.h"
#include "core/collection/CollectionChanges.h"
#include "core/roots/RootFolders.h"
#include "core/watch/FolderChanges.h"

#include <algorithm>
#include <cerrno>

namespace qo::cli
{
TagWritten tagWritten(
    const CString& path, bool isWritten, bool hasChanged, const CString& cause, bool isStopped)
{
    if (!isWritten)
        throw HostError(isStopped ? ExitCode::interrupted : ExitCode::failed,
                        "the tag of " + host::shownPath(path) +
                            " was not written, the file is as it was: " + host::plainWords(cause));
    return hasChanged ? TagWritten::changed : TagWritten::same;
}

TagWritten writeTags(const CString& path, KVTagLib::CTags tags, host::ProgressReporter& progress)
{
    CString cause;
    bool hasChanged = false;
    const bool isWritten = CMusicTagEx::writeTag(path, tags, &cause, &hasChanged);
    return tagWritten(path, isWritten, hasChanged, cause, progress.isCanceled());
}

TagWritten tagShown(const CString& path)
{
    FileInfo info;
    std::uint64_t room = 0;
    const CString folder = CQoCollPath(path).getParent().toString();
    int error = fileSystem().info(path, Spelling::exact, info);
    if (error == 0)
        error = fileSystem().mayChange(folder);
    if (error == 0)
        error = fileSystem().mayRemove(path);
    if (error == 0 && fileSystem().room(folder, room) == 0 &&
        room < static_cast<std::uint64_t>(info.size))
        error = ENOSPC;
    if (error != 0)
        throw HostError(ExitCode::failed,
                        "the tag of " + host::shownPath(path) +
                            " cannot be written: " + host::errorWords(error));
    return TagWritten::shown;
}

void TagWriting::note(const CString& path, TagWritten written)
{
    const bool hasChanged = written == TagWritten::changed;
    if (m_line.json)
    {
        Json object;
        putPath(object, "path", path);
        object["written"] = hasChanged;
        m_line.out.line(dump(object));
    }
    if (written == TagWritten::shown)
        return;
    if (!m_line.json)
        m_line.note((hasChanged ? "written: " : "already so, nothing to write: ") +
                    host::shownPath(path));
    ++(hasChanged ? m_changed : m_same);
    m_done.push_back(path);
}

std::string TagWriting::countsText() const
{
    return countText(static_cast<std::int64_t>(m_changed), "file") + " written" +
           (m_same > 0 ? ", " + std::to_string(m_same) + " already so" : "");
}

void TagWriting::stop(std::span<const CString> left) const
{
    if (m_line.dryRun)
        throw HostError(ExitCode::interrupted,
                        "stopped: " + countText(static_cast<std::int64_t>(left.size()), "file") +
                            " not shown; a dry run writes nothing");
    for (const CString& path : left)
        m_line.note("not written: " + host::shownPath(path));
    throw HostError(ExitCode::interrupted, "stopped: " + countsText() + m_goesOn);
}

ExitCode TagWriting::run(const Write& write)
{
    host::ProgressReporter progress({});
    const InterruptGuard guard(progress);
    const KVTagLib::WriteStop stopOfWrite([&progress] { return progress.isCanceled(); });
    for (std::size_t i = 0; i < m_paths.size(); ++i)
    {
        if (progress.isCanceled())
            stop(m_paths.subspan(i));
        try
        {
            note(m_paths[i], write(m_paths[i], progress));
        }
        catch (const HostError& error)
        {
            if (m_paths.size() == 1)
                throw;
            CommandLine::complain(error.what());
            if (error.code() == ExitCode::interrupted)
                stop(m_paths.subspan(i));
            ++m_failed;
        }
    }
    if (m_paths.size() > 1 && m_same > 0)
        m_line.note(countsText());
    if (m_failed == 0)
        return ExitCode::done;
    return m_failed < m_paths.size() ? ExitCode::partly : ExitCode::failed;
}

void TagWriting::takeIn(host::Session& session, bool isLoaded)
{
    using Kind = host::FolderEvent::Kind;
    std::vector<host::FolderEvent> events;
    const host::RootFolders roots;
    for (const CString& path : m_done)
    {
        if (!roots.holder(path).IsEmpty())
            events.push_back({Kind::added, toSystemPath(path), {}, {}});
    }
    if (events.empty())
        return;
    try
    {
        if (!isLoaded)
            loadForReading(m_line, session);
        std::erase_if(events,
                      [](const host::FolderEvent& event)
                      { return !host::CollectionChanges::recordOf(fromSystemPath(event.path)); });
        host::ProgressReporter progress({});
        host::FolderChanges(session).apply(events, progress);
    }
    catch (const HostError& error)
    {
        m_line.note(std::string("the collection takes the new tags in at the next scan: ") +
                    error.what());
    }
}
} // namespace qo::cli
