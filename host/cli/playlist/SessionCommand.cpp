#include "cli/playlist/PlaylistCommand.h"
#include "cli/shown/Listing.h"
#include "cli/shown/Text.h"
#include "core/collection/KnownNotes.h"

namespace qo::cli
{
namespace
{
struct SessionOptions
{
    int session = 0;
    bool isLong = false;
};

Json sessionJson(const QoSessionDbItem& session, int files)
{
    Json record;
    record["id"] = session.id;
    record["name"] = toUtf8(session.name);
    record["source"] = static_cast<int>(session.source);
    const std::string start = isoTime(session.startTime);
    const std::string end = isoTime(session.endTime);
    record["start"] = start.empty() ? Json() : Json(start);
    record["end"] = end.empty() ? Json() : Json(end);
    record["files"] = files;
    return record;
}

/// Runs where there is a collection; without one there are no sessions.
ExitCode withDatabase(CommandLine& line, const std::function<void(bool hasDatabase)>& work)
{
    const auto session = openKernel(line, KernelUse::look);
    session->kernel().run([&work, &session] { work(session->checkDatabase()); });
    return ExitCode::done;
}

ExitCode listSessions(CommandLine& line, bool isLong)
{
    return withDatabase(line,
                        [&](bool hasDatabase)
                        {
                            CArray<QoSessionQueryItem> sessions;
                            if (hasDatabase)
                                CMpSessionUtils::getAllSessions(sessions, 0);
                            Listing listing(line,
                                            isLong,
                                            {"id", "name", "source", "start", "end", "files"},
                                            {Listing::Column::number,
                                             Listing::Column::name,
                                             Listing::Column::text,
                                             Listing::Column::text,
                                             Listing::Column::number});
                            for (const QoSessionQueryItem& item : sessions)
                            {
                                if (listing.isForPeople())
                                    listing.addCells({std::to_string(item.session->id),
                                                      oneLine(item.session->name),
                                                      localTimeText(item.session->startTime),
                                                      localTimeText(item.session->endTime),
                                                      countText(item.fileCount, "file")});
                                else
                                    listing.addRecord(sessionJson(*item.session, item.fileCount));
                            }
                            listing.finish();
                        });
}

ExitCode showSession(CommandLine& line, const SessionOptions& options)
{
    return withDatabase(
        line,
        [&](bool hasDatabase)
        {
            boost::shared_ptr<QoSessionDbItem> session;
            if (!hasDatabase || !CMpSessionUtils::getSession(options.session, session))
                throw HostError(ExitCode::notFound,
                                "there is no session " + std::to_string(options.session));
            host::KnownNotes notes;
            QoFileDbItemArray files;
            CMpPlaylistUtils::GetSessionFiles(options.session, files);
            if (options.isLong && !line.json)
                line.out.line(recordHeader());
            for (const QoFileDbItemPtr& item : files)
            {
                host::JsonLine json;
                if (line.json)
                    putRecord(json, *item, notes);
                line.out.line(line.json        ? std::string(json.end())
                              : options.isLong ? recordRow(*item, notes)
                                               : harmless(host::shownPath(item->path)));
            }
        });
}
} // namespace

void setUpSession(CommandLine& line, CLI::App& command)
{
    const auto options = std::make_shared<SessionOptions>();
    const auto list = [&line, options] { return listSessions(line, options->isLong); };
    line.setAction(command, list);
    command.require_subcommand(0, 1);
    CLI::App* const ls = line.addCommand(command, "ls", "List them", list);
    CLI::App* const show =
        line.addCommand(command,
                        "show",
                        "List the files of one",
                        [&line, options] { return showSession(line, *options); });
    show->add_option("SESSION", options->session, "Its id, as \"qo session ls\" shows it")
        ->required();
    for (CLI::App* each : {ls, show})
        each->add_flag("-l,--long", options->isLong, "Tabs between the columns, with their names");
}
} // namespace qo::cli
