#include "cli/places/SortedSendings.h"

#include "cli/rules/RuleCommand.h"
#include "core/base/HostFiles.h"
#include "core/load/StoredLoad.h"
#include "core/plan/TargetName.h"
#include "core/plan/UploadSorter.h"

#include <map>

namespace qo::cli
{
namespace
{
using host::RuleStore;
using host::UploadSorter;

/// The rule that the place keeps for one kind of files; a null one for "".
NamedRule
ruleFor(const RuleStore& store, const FarPlace& place, const char* kind, const CString& kept)
{
    try
    {
        return kept.IsEmpty() ? NamedRule() : findRule(store, toUtf8(kept));
    }
    catch (const HostError& error)
    {
        throw HostError(error.code(),
                        "the " + std::string(kind) + " of " + place.name() +
                            " cannot be used: " + error.what() + "; --unsorted sends without it");
    }
}

/// Folders of a place that files are sent to: each is looked up once, and has one spelling however
/// the rules spell it. Example: with "ABBA" there, files for "Abba" and "abba" go to "ABBA".
class FarFolders
{
public:
    FarFolders(FarPlace& place, IQoProgress& progress) : m_place(place), m_progress(progress) {}

    CQoCollPath path(const CStringArray& names)
    {
        Known known = {m_place.root(), true};
        for (const CString& name : names)
        {
            const CQoCollPath wanted = known.path.child(componentIn(m_place, name));
            const auto [at, isNew] = m_known.try_emplace(host::sameNameKey(wanted.toString()));
            if (isNew)
                at->second = look(known, wanted);
            known = at->second;
        }
        return known.path;
    }

    /// A component of a path of this machine as the place writes it.
    static CString componentIn(const FarPlace& place, const CString& name)
    {
        return place.componentOf(toSystemPath(u"C:\\" + name).substr(1));
    }

private:
    struct Known
    {
        CQoCollPath path;
        bool isThere = false;
    };

    Known look(const Known& above, const CQoCollPath& wanted)
    {
        FarEntry entry;
        const bool isThere = above.isThere && m_place.find(wanted, m_progress, entry);
        stopIfCancelled(m_progress);
        if (!isThere || !entry.isFolder)
            return {wanted, false};
        return {above.path.child(entry.component), true};
    }

    FarPlace& m_place;
    IQoProgress& m_progress;
    std::map<CString, Known> m_known;
};
} // namespace

void addUploadOptions(CLI::App& command, UploadOptions& options)
{
    addOptional(command, "--music-rule", options.music, "Sort music by it that is sent there")
        ->type_name("RULE");
    addOptional(command, "--movies-rule", options.movies, "The same for videos; \"\": by none")
        ->type_name("RULE");
}

CString keptRule(const std::string& typed)
{
    if (typed.empty())
        return {};
    const RuleStore store;
    const NamedRule named = findRule(store, typed);
    if (named.id.IsEmpty())
        return fromUtf8(toSystemPath(named.file));
    return RuleStore::isBuiltIn(named.id) ? fromUtf8(named.name()) : named.id;
}

void sortSendings(host::Session& session,
                  host::ProgressReporter& progress,
                  FarPlace& place,
                  std::vector<Transfer>& sendings,
                  FarReport& report)
{
    host::loadStored(session, progress);
    const RuleStore store;
    const UploadRules kept = place.uploadRules();
    const NamedRule music = ruleFor(store, place, "music rule", kept.musicRule);
    const NamedRule movies = ruleFor(store, place, "rule for movies", kept.moviesRule);
    UploadSorter sorter({music.rule, CStringArray::split(kept.musicFolder, u'\\')},
                        {movies.rule, CStringArray::split(kept.moviesFolder, u'\\')},
                        place.nameRules());
    FarFolders folders(place, progress);
    const auto sort = [&](Transfer& each)
    {
        stopIfCancelled(progress);
        const UploadSorter::Answer answer = sorter.answerFor(each.local);
        if (!answer.reason.empty())
        {
            const std::string file = host::shownPath(each.local);
            report.add({file, file, each.size, answer.reason});
            return true;
        }
        if (answer.isSorted)
            each.far =
                folders.path(answer.folders).child(FarFolders::componentIn(place, answer.name));
        return false;
    };
    std::erase_if(sendings, sort);
}
} // namespace qo::cli
