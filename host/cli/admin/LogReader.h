#pragma once

#include <QoKernel/Kernel.h>

#include <string>
#include <vector>

namespace qo::cli
{
/// One log file and how far it was read.
class LogReader
{
public:
    explicit LogReader(const CString& file) : m_file(file) {}

    const CString& file() const { return m_file; }
    /// The lines that came since the last call, as UTF-8, without their ends; a line that is not
    /// finished waits for the next call. Lines above the level are left out, with what belongs to
    /// them.
    std::vector<std::string> newLines(int maxLevel);

private:
    bool takes(const CString& line, int maxLevel);

    CString m_file;
    std::int64_t m_position = 0;
    bool m_lastWasTaken = true;
};

/// The log files of the folder, oldest first. Only names with the stamp of a log file count.
std::vector<CString> logFiles(const CString& folder);
/// The part of a log file's name that its process and start give it: "20260131_235959_1A2B".
CString runOf(const CString& file);
/// The level of a line by its label; -1 for a line without one.
int levelOfLine(const CString& line);
} // namespace qo::cli
