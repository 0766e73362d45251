#include "cli/places/FarReport.h"

#include "cli/shown/Text.h"

namespace qo::cli
{
void tellOf(CommandLine& line, const std::string& name, const std::string& sentence)
{
    if (line.json)
        line.out.line(host::dump({{"name", name}}));
    else
        line.note(sentence);
}

void FarReport::add(const FarDeed& deed)
{
    ++(deed.cause.empty() ? m_succeeded : m_failed);
    if (m_line.json)
    {
        host::Json record;
        record["path"] = deed.path;
        record["file"] = deed.file;
        record["size"] = deed.size;
        record["error"] = deed.cause;
        m_line.out.line(host::dump(record));
    }
    else if (deed.cause.empty())
    {
        const std::string file = deed.file.empty() ? "" : " (" + sizeText(deed.size) + ")";
        m_line.note(m_done + ": " + deed.path + file);
    }
    if (!deed.cause.empty())
        CommandLine::complain(m_notDone + ": " + deed.path + ": " + deed.cause);
}

ExitCode FarReport::exitCode() const
{
    if (m_failed == 0)
        return ExitCode::done;
    return m_succeeded > 0 ? ExitCode::partly : ExitCode::failed;
}

HostError FarReport::interrupted() const
{
    return {ExitCode::interrupted, "interrupted after " + countText(m_succeeded, "file")};
}
} // namespace qo::cli
