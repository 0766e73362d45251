#include "common/TraceFile.h"

#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "platform/TemporaryNames.h"
#include "types/CharClass.h"
#include "types/Utf.h"

#include <algorithm>
#include <cstdlib>
#include <set>
#include <vector>

// A log file is named "<base>_YYYYMMDD_HHMMSS_<process>.txt". Cleaning up removes only names of
// exactly that form, so no other file of the user can be taken for a log.

namespace qo
{
namespace
{
constexpr int shortestBaseName = 5;

/// Names and labels of the levels 0, 10, 20 and so on.
struct LevelRow
{
    const char16_t* name;
    const char16_t* label;
};
constexpr LevelRow levelRows[] = {{u"None", u""},
                                  {u"Error", u"ERR"},
                                  {u"Warning", u"WRN"},
                                  {u"Info", u"INF"},
                                  {u"Debug", u"DBG"},
                                  {u"Detail", u"-->"},
                                  {u"Verbose", u"---"}};
constexpr int levelRowCount = static_cast<int>(std::size(levelRows));

/// The number of characters at the start that pass the test.
int countWhile(std::u16string_view text, bool (*test)(char16_t))
{
    int count = 0;
    while (count < static_cast<int>(text.size()) && test(text[static_cast<std::size_t>(count)]))
        ++count;
    return count;
}

bool isUpperHex(char16_t c)
{
    return isDigit(c) || (c >= u'A' && c <= u'F');
}

/// "_YYYYMMDD_HHMMSS_PID.txt"
bool isStamp(std::u16string_view text)
{
    for (const int digits : {8, 6})
    {
        if (text.empty() || text[0] != u'_' || countWhile(text.substr(1), isDigit) != digits)
            return false;
        text.remove_prefix(static_cast<std::size_t>(digits) + 1);
    }
    if (text.empty() || text[0] != u'_')
        return false;
    const int process = countWhile(text.substr(1), isUpperHex);
    return process > 0 && text.substr(static_cast<std::size_t>(process) + 1) == u".txt";
}
/// The number at the end of a name with a stamp.
unsigned processOf(const CString& name)
{
    const std::string digits = toUtf8(name.Mid(name.ReverseFind(u'_') + 1));
    return static_cast<unsigned>(std::strtoul(digits.c_str(), nullptr, 16));
}

/// "Trace" stands for no path, and the current folder is that of a mere name.
CString wholeBasePath(const CString& basePath)
{
    const CString path = basePath.IsEmpty() ? CString(u"Trace") : basePath;
    return path.Find(u'\\') < 0 && path.Find(u'/') < 0 ? currentFolder() + u"\\" + path : path;
}
} // namespace

int levelFromName(const CString& name)
{
    for (int i = 0; i < levelRowCount; ++i)
    {
        if (name.CompareNoCase(levelRows[i].name) == 0)
            return i * 10;
    }
    return 0;
}

const char16_t* levelLabel(int level)
{
    const int row = level / 10;
    return level < 0 || row >= levelRowCount ? u"" : levelRows[row].label;
}

TraceFile::TraceFile() = default;

TraceFile::TraceFile(CString basePath) : m_basePath(std::move(basePath)) {}

TraceFile::~TraceFile() = default;

void TraceFile::setBasePath(const CString& basePath)
{
    close();
    m_basePath = basePath;
}

void TraceFile::openNamed()
{
    // Appends instead of emptying: a second change of files within one second must not lose lines.
    int error = 0;
    m_file = fileSystem().open(m_name, OpenMode::append, error);
    m_size = m_file ? m_file->position() : 0;
    constexpr char16_t mark = 0xFEFF;
    if (m_file && m_size == 0 && m_file->write(&mark, sizeof(mark)))
        m_size = sizeof(mark);
}

void TraceFile::open(const CalendarTime& time)
{
    close();
    m_name.Format(
        u"%s_%s_%X.txt", wholeBasePath(m_basePath), timeStamp(time), systemClock().processId());
    openNamed();
    if (m_file)
        m_date = time;
}

void TraceFile::close()
{
    m_file.reset();
}

void TraceFile::reopen()
{
    if (!m_file)
        return;
    close();
    openNamed();
}

void TraceFile::writeLine(int level, const CalendarTime& time, const CString& text)
{
    if (!m_file)
        return;
    CString line;
    line.Preallocate(text.GetLength() + 40);
    line.Format(u"%02d:%02d:%02d.%03d %X %s: ",
                time.hour,
                time.minute,
                time.second,
                time.millisecond,
                systemClock().threadId(),
                levelLabel(level));
    line += text;
    line += u"\r\n";
    const std::size_t bytes = static_cast<std::size_t>(line.GetLength()) * sizeof(char16_t);
    if (m_file->write(line.GetString(), bytes))
        m_size += static_cast<std::int64_t>(bytes);
}

void TraceFile::cleanUp(const CString& basePath, int keep)
{
    const CString whole = wholeBasePath(basePath);
    const int separator = std::max(whole.ReverseFind(u'\\'), whole.ReverseFind(u'/'));
    const CString base = whole.Mid(separator + 1);
    const CString folder = whole.Left(separator);
    if (keep <= 0 || base.GetLength() < shortestBaseName)
        return;
    std::vector<DirEntry> entries;
    if (fileSystem().list(folder, entries) != 0)
        return;
    std::vector<CString> names;
    for (const DirEntry& entry : entries)
    {
        const bool isOurs = entry.info.kind == FileKind::regular && !entry.info.isLink &&
                            entry.name.Left(base.GetLength()) == base &&
                            isStamp(entry.name.Mid(base.GetLength()).view());
        if (isOurs)
            names.push_back(entry.name);
    }
    // Names contain the time, so the newest come first.
    std::sort(names.begin(), names.end(), [](const CString& a, const CString& b) { return b < a; });
    std::set<unsigned> processes;
    for (std::size_t i = 0; i < names.size(); ++i)
    {
        // A process writes to its newest file.
        const unsigned process = processOf(names[i]);
        const bool isInUse = processes.insert(process).second && isProcessRunning(process);
        if (i >= static_cast<std::size_t>(keep) && !isInUse)
            (void)fileSystem().removeFile(folder + u"\\" + names[i]);
    }
}
} // namespace qo
