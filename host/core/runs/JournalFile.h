#pragma once

#include <functional>
#include <memory>
#include <string>

namespace qo::host
{
/// A text file that only grows, a line or more at a time, and that one process at a time has. Not
/// for several threads at once.
class JournalFile
{
public:
    /// Makes the file with its first lines, which it has in full, durably, or is not there. Throws
    /// HostError, also when the path is taken.
    static std::unique_ptr<JournalFile> make(const std::string& path, const std::string& lines);
    /// Takes up an existing file. Throws HostError: notFound, busy while another has it, failed.
    static std::unique_ptr<JournalFile> open(const std::string& path);
    ~JournalFile();
    JournalFile(const JournalFile&) = delete;
    JournalFile& operator=(const JournalFile&) = delete;

    const std::string& path() const { return m_path; }
    /// All its whole lines. Throws HostError.
    std::string content() const;
    /// Cuts off a last line that was not written to its end. Throws HostError.
    void cutTornLine();

    /// All of it or, with a HostError, nothing.
    void append(const std::string& lines);
    /// Waits until the disk has it all. Throws HostError.
    void sync();

    /// Called before and after each append, while the process can still be ended in between. Set
    /// by whoever wants to see that nothing is lost then.
    static std::function<void()>& watcher();

private:
    JournalFile(const std::string& path, int descriptor);

    void lock();
    [[noreturn]] void fail(const std::string& deed, int error) const;

    std::string m_path;
    int m_descriptor;
};
} // namespace qo::host
