#pragma once

#include "platform/Clock.h"
#include "types/String.h"

#include <memory>

namespace qo
{
class IFile;

/// A text file of log lines, in UTF-16 with a byte-order mark and CR LF. Its name consists of its
/// base path, the time of opening and the process. An empty base path stands for "Trace"; a name
/// without a folder lies in the current folder. It has no lock.
class TraceFile
{
public:
    TraceFile();
    explicit TraceFile(CString basePath);
    ~TraceFile();

    const CString& basePath() const { return m_basePath; }
    /// Closes the file; further lines go to a new one.
    void setBasePath(const CString& basePath);

    bool isOpen() const { return m_file != nullptr; }
    /// The date of the open file, or of the last one.
    const CalendarTime& date() const { return m_date; }
    /// The size of the open file in bytes.
    std::int64_t size() const { return m_size; }

    /// If the file cannot be opened it stays closed.
    void open(const CalendarTime& time);
    void close();
    /// Closes the file and opens it again to append.
    void reopen();
    /// Does nothing while the file is closed.
    void writeLine(int level, const CalendarTime& time, const CString& text);

    /// Removes the oldest log files of a base path until keep of them are left; the newest file of
    /// each process that still runs is kept in addition. Only names with the stamp of this class
    /// are considered; a base name of fewer than 5 characters removes nothing.
    static void cleanUp(const CString& basePath, int keep);

private:
    void openNamed();

    CString m_basePath = u"Trace";
    CString m_name;
    std::unique_ptr<IFile> m_file;
    CalendarTime m_date;
    std::int64_t m_size = 0;
};

/// The level for a name in the configuration ("None", "Error", ... "Verbose"), without regard to
/// case; 0 for any other text.
QO_API int levelFromName(const CString& name);
/// Three characters, such as "ERR" for 10; "" for a level without a label.
QO_API const char16_t* levelLabel(int level);
/// The number of old log files of one base name that are kept.
constexpr int keptLogFiles = 10;
} // namespace qo
