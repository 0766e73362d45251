#pragma once

#include "cli/CommandLine.h"
#include "core/session/ProgressReporter.h"

#include <QoKernel/Tags.h>

#include <functional>
#include <span>
#include <vector>

namespace qo::host
{
class Session;
}

namespace qo::cli
{
/// How the tag of one file ended.
enum class TagWritten
{
    changed,
    same, ///< the file says already what it should
    shown ///< a dry run
};

/// What a writer of the kernel made of a file: whether it was written, and whether that changed it.
/// Throws HostError with the cause where it failed.
TagWritten tagWritten(
    const CString& path, bool isWritten, bool hasChanged, const CString& cause, bool isStopped);

/// Writes all items that are set. Throws HostError with the cause where that fails.
TagWritten writeTags(const CString& path, KVTagLib::CTags tags, host::ProgressReporter& progress);

/// What a dry run has instead of a writer. Throws HostError when the file could not be replaced.
TagWritten tagShown(const CString& path);

/// Writes the tags of many files, one after another: names each as it is done, goes on after a
/// failure unless there is one file alone, and can be interrupted between two files and within one.
/// On the kernel's thread.
class TagWriting
{
public:
    /// Writes one file. Throws HostError.
    using Write = std::function<TagWritten(const CString&, host::ProgressReporter&)>;

    /// goesOn is what people read after an interruption: how the rest gets done.
    TagWriting(CommandLine& line, std::span<const CString> paths, std::string goesOn)
        : m_line(line), m_paths(paths), m_goesOn(std::move(goesOn))
    {
    }

    ExitCode run(const Write& write);
    /// The collection learns what was written at once, and not at the next scan. Loads it if that
    /// has not been done. A failure is noted.
    void takeIn(host::Session& session, bool isLoaded);

private:
    void note(const CString& path, TagWritten written);
    std::string countsText() const;
    [[noreturn]] void stop(std::span<const CString> left) const;

    CommandLine& m_line;
    std::span<const CString> m_paths;
    std::string m_goesOn;
    std::vector<CString> m_done; ///< what has its values by now
    std::size_t m_changed = 0;
    std::size_t m_same = 0;
    std::size_t m_failed = 0;
};
} // namespace qo::cli
