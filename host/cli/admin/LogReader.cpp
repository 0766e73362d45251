#include "cli/admin/LogReader.h"

#include <algorithm>
#include <memory>

namespace qo::cli
{
namespace
{
constexpr const char16_t* extension = u".txt";
constexpr int highestLevel = qo::level::detail;

bool hasDigits(std::u16string_view text, std::size_t at, std::size_t count)
{
    if (at + count > text.size())
        return false;
    return std::all_of(text.begin() + static_cast<std::ptrdiff_t>(at),
                       text.begin() + static_cast<std::ptrdiff_t>(at + count),
                       [](char16_t c) { return c >= u'0' && c <= u'9'; });
}

CString logNameOf(const CString& file)
{
    return file.Mid(file.ReverseFind(u'\\') + 1);
}
} // namespace

CString runOf(const CString& file)
{
    constexpr std::size_t dateDigits = 8;
    constexpr std::size_t timeDigits = 6;
    const CString name = logNameOf(file);
    const std::u16string_view text = name.view();
    if (!text.ends_with(extension))
        return {};
    // "<base>_<date>_<time>_<process>.txt"; the base may hold underscores of its own.
    for (std::size_t at = text.find(u'_'); at != std::u16string_view::npos;
         at = text.find(u'_', at + 1))
    {
        const std::size_t date = at + 1;
        const std::size_t time = date + dateDigits + 1;
        const std::size_t process = time + timeDigits + 1;
        if (hasDigits(text, date, dateDigits) && hasDigits(text, time, timeDigits) &&
            process < text.size())
            return CString(
                text.substr(date, text.size() - date - CString(extension).view().size()));
    }
    return {};
}

std::vector<CString> logFiles(const CString& folder)
{
    std::vector<DirEntry> entries;
    std::vector<CString> files;
    if (fileSystem().list(folder, entries) != 0)
        return files;
    for (const DirEntry& entry : entries)
    {
        if (entry.info.kind == FileKind::regular && !runOf(entry.name).IsEmpty())
            files.push_back(folder + u"\\" + entry.name);
    }
    std::sort(files.begin(),
              files.end(),
              [](const CString& a, const CString& b)
              {
                  const CString runA = runOf(a);
                  const CString runB = runOf(b);
                  return runA == runB ? a < b : runA < runB;
              });
    return files;
}

int levelOfLine(const CString& line)
{
    // "HH:MM:SS.mmm THREAD LBL: text"
    const int thread = line.Find(u' ');
    const int label = thread < 0 ? -1 : line.Find(u' ', thread + 1);
    if (label < 0 || line.Mid(label + 4, 2) != u": " || line.Mid(2, 1) != u":")
        return -1;
    const CString name = line.Mid(label + 1, 3);
    for (int level = qo::level::error; level <= highestLevel; level += 10)
    {
        if (name == levelLabel(level))
            return level;
    }
    return -1;
}

bool LogReader::takes(const CString& line, int maxLevel)
{
    const int level = levelOfLine(line);
    if (level >= 0)
        m_lastWasTaken = level <= maxLevel;
    return m_lastWasTaken;
}

std::vector<std::string> LogReader::newLines(int maxLevel)
{
    std::vector<std::string> lines;
    int error = 0;
    const std::unique_ptr<IFile> file = fileSystem().open(m_file, OpenMode::read, error);
    if (!file || !file->seek(m_position))
        return lines;
    std::u16string pending;
    char16_t buffer[32768];
    for (;;)
    {
        const std::int64_t got = file->read(buffer, sizeof(buffer));
        if (got <= 0)
            break;
        // Half a unit at the end comes with the next reading.
        pending.append(buffer, static_cast<std::size_t>(got) / sizeof(char16_t));
        if (got % 2 != 0)
            break;
        std::size_t start = 0;
        for (std::size_t end = pending.find(u'\n'); end != std::u16string::npos;
             end = pending.find(u'\n', start))
        {
            std::u16string_view line(pending.data() + start, end - start);
            m_position += static_cast<std::int64_t>(line.size() + 1) * 2;
            start = end + 1;
            if (line.ends_with(u'\r'))
                line.remove_suffix(1);
            if (line.starts_with(u'\xFEFF'))
                line.remove_prefix(1);
            if (takes(CString(line), maxLevel))
                lines.push_back(toUtf8(line));
        }
        pending.erase(0, start);
    }
    return lines;
}
} // namespace qo::cli
