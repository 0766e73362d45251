#include "cli/admin/MovedOffers.h"

#include "cli/KernelCommand.h"
#include "cli/files/FileRecord.h"
#include "cli/shown/Text.h"
#include "core/base/HostFiles.h"
#include "core/moved/HeadStore.h"
#include "core/moved/MovedFiles.h"
#include "core/roots/RootFolders.h"
#include "core/roots/RootLister.h"

namespace qo::cli
{
namespace
{
using host::MovedFiles;
using host::Session;

void printOffer(CommandLine& line, const host::MoveOffer& offer)
{
    if (!line.json)
        return line.out.line(harmless(host::shownPath(offer.from)) + " -> " +
                             harmless(host::shownPath(offer.to)));
    Json object;
    putPath(object, "from", offer.from);
    putPath(object, "to", offer.to);
    object["velmoraId"] = toUtf8(offer.velmoraId);
    line.out.line(dump(object));
}

void printUnclear(CommandLine& line, const host::UnclearMove& unclear)
{
    if (line.json)
    {
        Json object;
        putPath(object, "from", unclear.from);
        object["candidates"] = Json::array();
        for (const CString& candidate : unclear.candidates)
        {
            Json each;
            putPath(each, "path", candidate);
            object["candidates"].push_back(each);
        }
        return line.out.line(dump(object));
    }
    const bool isOne = unclear.candidates.size() == 1;
    std::string text = host::shownPath(unclear.from) +
                       (isOne ? " may be this, as may others:" : " may be any of these:");
    for (const CString& candidate : unclear.candidates)
        text += "\n  " + host::shownPath(candidate);
    line.note(text);
}

void print(CommandLine& line, const MovedFiles& moved)
{
    for (const host::MoveOffer& offer : moved.offers)
        printOffer(line, offer);
    for (const host::UnclearMove& unclear : moved.unclear)
        printUnclear(line, unclear);
    line.out.flush();
    line.note(
        countText(moved.vanished, "file") + " gone, " + countText(moved.unknown, "file") +
        " new, " + std::to_string(moved.offers.size()) + " of them moved" +
        (moved.unclear.empty() ? "" : ", " + std::to_string(moved.unclear.size()) + " unclear"));
}

/// What the scan will do, for the user to agree to.
std::string consequences(const MovedFiles& moved)
{
    std::string text;
    if (const std::size_t count = moved.offers.size())
        text = countText(static_cast<int>(count), "record") +
               " will follow the moved files; a scan without this takes them for gone and new.";
    if (const std::size_t count = moved.unclear.size())
        text += (text.empty() ? "" : " ") + countText(static_cast<int>(count), "unclear record") +
                " will go with " + (count == 1 ? "its id" : "their ids") + ", and the files that " +
                (count == 1 ? "it" : "they") + " may belong to will count as new.";
    return text;
}
} // namespace

int settleMoves(CommandLine& line, Session& session, const CStringArray& newRoots)
{
    loadForReading(line, session);
    session.kernel().run(
        [&newRoots]
        {
            CQoPathsInfoMap kinds;
            for (const CString& root : newRoots)
                kinds.SetAt(root, CQoPathInfo::audioIsMusic);
            CQoCollection::m_ownCollection.addRootDirs(newRoots, kinds);
        });
    const MovedFiles moved =
        runShown(line,
                 session,
                 [&session, &newRoots](host::ProgressReporter& progress)
                 {
                     CStringArray roots = host::RootFolders().folders();
                     roots.Append(newRoots);
                     host::RootLister lister(roots, session.ignoredNames());
                     return host::findMoved(host::HeadStore(), lister, progress);
                 });
    session.kernel().run([&] { print(line, moved); });
    if (line.dryRun || (moved.offers.empty() && moved.unclear.empty()))
        return 0;
    confirm(line, consequences(moved));
    if (!moved.offers.empty())
        runShown(line,
                 session,
                 [&](host::ProgressReporter& progress)
                 { host::applyMoves(session, moved.offers, progress); });
    return static_cast<int>(moved.offers.size());
}

void rememberHeads(CommandLine& line, Session& session)
{
    const bool isWhole = runShown(line,
                                  session,
                                  [](host::ProgressReporter& progress)
                                  {
                                      QoFileDbItemArray records;
                                      CQoCollection::m_ownCollection.copyFiles(records);
                                      host::HeadStore heads;
                                      const bool whole = heads.update(records, progress);
                                      heads.save();
                                      return whole;
                                  });
    if (!isWhole)
        line.note("the rest of the files is looked at the next time");
}
} // namespace qo::cli
