#pragma once

#include "platform/Clock.h"
#include "types/String.h"

#include <memory>

namespace qo
{
class IFile;

/// One text file of log lines: UTF-16 with a byte-order mark, CR LF, named after its base path, the
/// time of opening and the process. Without a base path, which is also the meaning of an empty one,
/// it is "Trace"; a mere name lies in the current folder. No lock of its own.
class TraceFile
{
public:
    TraceFile();
    explicit TraceFile(CString basePath);
    ~TraceFile();

    const CString& basePath() const { return m_basePath; }
    /// Closes the open file; lines go to a new one from then on.
    void setBasePath(const CString& basePath);

    bool isOpen() const { return m_file != nullptr; }
    /// Year, month and day of the open file; what was opened last when none is.
    const CalendarTime& date() const { return m_date; }
    /// Bytes in the open file.
    std::int64_t size() const { return m_size; }

    /// A file that cannot be opened leaves it closed.
    void open(const CalendarTime& time);
    void close();
    /// Closes the file and opens the same one again at its end.
    void reopen();
    /// Does nothing while closed.
    void writeLine(int level, const CalendarTime& time, const CString& text);

    /// Removes the oldest log files of that base path so that `keep` of them stay, and beyond them
    /// the newest of each process that still runs. Only names with the stamp of this class are
    /// looked at, and a base name of fewer than 5 characters deletes nothing.
    static void cleanUp(const CString& basePath, int keep);

private:
    void openNamed();

    CString m_basePath = u"Trace";
    CString m_name;
    std::unique_ptr<IFile> m_file;
    CalendarTime m_date;
    std::int64_t m_size = 0;
};

/// Level of a name of the configuration ("None", "Error", ... "Verbose"), without regard to case;
/// 0 for any other text.
QO_API int levelFromName(const CString& name);
/// Three characters: "ERR" for 10 and so on; empty for a level without a row.
QO_API const char16_t* levelLabel(int level);
/// How many old log files of one base name are kept.
constexpr int keptLogFiles = 10;
} // namespace qo
