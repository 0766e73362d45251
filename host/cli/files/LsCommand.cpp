#include "cli/CommandLine.h"
#include "cli/KernelCommand.h"
#include "cli/files/FileChoice.h"
#include "cli/files/FileRecord.h"
#include "cli/files/LineFormat.h"
#include "cli/shown/Listing.h"
#include "cli/shown/Text.h"
#include "core/base/HostFiles.h"
#include "core/collection/KnownNotes.h"

namespace qo::cli
{
namespace
{
struct ListOptions
{
    FileChoice choice;
    bool isLong = false;
    bool withNul = false; ///< instead of a line break
    std::optional<std::string> format;
};

/// A path alone for another program: raw where a NUL ends it, else without line breaks.
std::string plainPath(const ListOptions& options, const QoFileDbItem& item)
{
    const std::string path = host::shownPath(item.path);
    return options.withNul ? path : harmless(path);
}

class FileLister
{
public:
    FileLister(CommandLine& line, const ListOptions& options)
        : m_line(line)
        , m_options(options)
        , m_table(line,
                  false,
                  {},
                  {Listing::Column::number, Listing::Column::text, Listing::Column::path})
    {
        m_table.writeAtOnce();
        if (options.format)
            m_format.emplace(*options.format);
    }

    void print(const QoFileDbItem& item)
    {
        if (m_line.json)
        {
            m_json.clear();
            putRecord(m_json, item, m_notes);
            return m_line.out.line(m_json.end());
        }
        if (m_options.isLong)
            return m_line.out.line(recordRow(item, m_notes));
        if (!m_format && !m_options.withNul && m_line.out.isTerminal())
            return m_table.addCells({item.duration > 0 ? durationText(item.duration) : "",
                                     artistAndTitle(item.artist, item.title),
                                     plainPath(m_options, item)});
        std::string text = m_format ? m_format->lineOf(item, m_notes) : plainPath(m_options, item);
        if (!m_options.withNul)
            return m_line.out.line(text);
        text += '\0';
        m_line.out.write(text);
    }

private:
    CommandLine& m_line;
    const ListOptions& m_options;
    Listing m_table;
    host::KnownNotes m_notes;
    host::JsonLine m_json;
    std::optional<LineFormat> m_format;
};

ExitCode list(CommandLine& line, const ListOptions& options)
{
    FileLister lister(line, options);
    const auto session = openKernel(line, KernelUse::look);
    loadForReading(line, *session);
    session->kernel().run(
        [&]
        {
            if (options.isLong && !line.json)
                line.out.line(recordHeader());
            for (const QoFileDbItemPtr& item : chosenFiles(options.choice))
            {
                if (line.out.isClosed())
                    return;
                lister.print(*item);
            }
        });
    return ExitCode::done;
}
} // namespace

void setUpList(CommandLine& line, CLI::App& command)
{
    auto options = std::make_shared<ListOptions>();
    line.setListAction(command, [&line, options] { return list(line, *options); });
    addQuery(command, options->choice);
    addNames(command, options->choice);
    addOrder(command, options->choice);
    addPlaceOption(line, command);
    CLI::Option* const isLong =
        command.add_flag("-l,--long", options->isLong, "Every field, with tabs between them");
    command.add_flag("-0,--null", options->withNul, "End each path with a NUL, for xargs -0")
        ->excludes(isLong);
    addOptional(command,
                "--format",
                options->format,
                "A line of your own: '{artist:30} {title}', see docs/fields.md")
        ->type_name("TEXT")
        ->excludes(isLong);
}
} // namespace qo::cli
