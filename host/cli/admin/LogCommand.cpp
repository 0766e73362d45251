#include "cli/CommandLine.h"
#include "cli/admin/LogReader.h"
#include "cli/files/FileRecord.h"
#include "core/base/HostFiles.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace qo::cli
{
namespace
{
struct LogOptions
{
    std::string level = "verbose";
    bool follow = false;
    bool all = false;
};

constexpr std::chrono::milliseconds pollGap{200};

class LogPrinter
{
public:
    LogPrinter(CommandLine& line, int maxLevel) : m_line(line), m_maxLevel(maxLevel) {}

    /// Prints all lines since the last call, with a line of its own where the file changes.
    void print(std::vector<LogReader>& readers)
    {
        for (LogReader& reader : readers)
        {
            const std::vector<std::string> lines = reader.newLines(m_maxLevel);
            if (lines.empty())
                continue;
            const std::string file = host::shownPath(reader.file());
            if (!m_line.json && m_lastFile != file)
                m_line.out.line((m_lastFile.empty() ? "" : "\n") +
                                Output::styled(Style::heading, "==> " + harmless(file) + " <=="));
            m_lastFile = file;
            for (const std::string& text : lines)
                printLine(file, text);
        }
    }

private:
    void printLine(const std::string& file, const std::string& text)
    {
        if (!m_line.json)
            return m_line.out.line(harmless(text));
        Json object;
        putPath(object, "file", file);
        object["level"] = levelOfLine(fromUtf8(text));
        object["line"] = text;
        m_line.out.line(dump(object));
    }

    CommandLine& m_line;
    int m_maxLevel;
    std::string m_lastFile;
};

/// Adds readers for files that are not read yet: those of the newest run, or all.
void addReaders(std::vector<LogReader>& readers, const CString& folder, bool all)
{
    const std::vector<CString> files = logFiles(folder);
    for (const CString& file : files)
    {
        const bool isKnown = std::any_of(readers.begin(),
                                         readers.end(),
                                         [&file](const LogReader& r) { return r.file() == file; });
        const bool isNewest = runOf(file) >= runOf(files.back()) ||
                              (!readers.empty() && runOf(file) > runOf(readers.back().file()));
        if (!isKnown && (all || isNewest))
            readers.emplace_back(file);
    }
}

ExitCode log(CommandLine& line, const LogOptions& options)
{
    const bool ownFolder = line.app.get_option("--data")->count() > 0;
    specialFolders().setBase(ownFolder ? fromSystemPath(host::absolutePath(line.dataFolder))
                                       : CString());
    const CString folder = CQoPaths::getLogDir();
    std::vector<LogReader> readers;
    addReaders(readers, folder, options.all);
    if (readers.empty())
        line.note("there is no log in " + host::shownPath(folder) +
                  "; \"qo config set TraceLevel Debug\" has the next commands write one");
    if (options.follow)
        line.out.flush(); // What comes later does not wait in a pager.
    LogPrinter printer(line, levelFromName(fromUtf8(options.level)));
    printer.print(readers);
    while (options.follow && !line.out.isClosed())
    {
        line.out.flush();
        std::this_thread::sleep_for(pollGap);
        addReaders(readers, folder, false);
        printer.print(readers);
    }
    return ExitCode::done;
}
} // namespace

void setUpLog(CommandLine& line, CLI::App& command)
{
    auto options = std::make_shared<LogOptions>();
    line.setListAction(command, [&line, options] { return log(line, *options); });
    command.add_option("--level", options->level, "Leave out what is less grave")
        ->check(CLI::IsMember({"error", "warning", "info", "debug", "detail", "verbose"},
                              CLI::ignore_case))
        ->capture_default_str();
    command.add_flag("-f,--follow", options->follow, "Go on with what is written from now on");
    command.add_flag("-a,--all", options->all, "All runs that are kept");
}
} // namespace qo::cli
