#include "core/load/CollectionLoader.h"
#include "core/plan/PlanBuilder.h"
#include "core/session/ProgressReporter.h"
#include "core/session/Session.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

// bench_plan DATA: loads the collection of the data folder and plans, again and again, by a rule
// with a separator, two folders and names from the tags. Prints the number of files, the median
// seconds, and how many would move and how many are refused.
namespace
{
using Clock = std::chrono::steady_clock;
using Verdict = qo::host::PlannedFile::Verdict;

void addFolder(CReorganizeRule& rule,
               CReorganizeRule::CSeperateRuleOutputNode* parent,
               const char16_t* folder)
{
    auto* const subdir = new CSubdirRule;
    subdir->keepOriginal = false;
    CReorganizeUtils::parseAttributesString(folder, &subdir->m_pattern);
    CReorganizeRule::CSubdirRuleNode* const node = rule.addSubdirRule(subdir, parent);
    auto* const music = new CRenameRule(CRenameRule::Music);
    music->keepOriginal = false;
    music->keepOriginalIfAttribEmpty = true;
    CReorganizeUtils::parseAttributesString(u"{track.number} {track.name}", &music->m_pattern);
    rule.addRenameRule(music, node);
    rule.addRenameRule(new CRenameRule(CRenameRule::Picture), node);
    rule.addRenameRule(new CRenameRule(CRenameRule::Lyrics), node);
}

CString storeRule()
{
    CReorganizeRule rule;
    const auto* const tracks = rule.addSeperateRule(new CArtistTracksSeperateRule(5), nullptr);
    addFolder(rule, tracks->getOutput(0), u"{artist.name}\\{track.year} {album.name}\\");
    addFolder(rule, tracks->getOutput(1), u"Various\\{artist.name}\\");
    addFolder(rule, tracks->getOutput(2), u"Unknown\\");
    for (const CNSAtom::EType attribute : {CNSAtom::Album, CNSAtom::Artist})
        rule.setUnknownAttribDefValue(attribute, u"Unknown");
    CString id;
    CReorganizeUtils::saveReorganizeRule(u"", &rule, u"bench", id);
    return id;
}
} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    qo::host::Session::Options options;
    options.dataFolder = argv[1];
    qo::host::Session session(std::move(options));
    qo::host::ProgressReporter progress([](const qo::host::ProgressEvent&) {});
    return session.kernel().run(
        [&]
        {
            qo::host::loadCollection(session, {}, progress);
            QoFileDbItemArray records;
            CQoCollection::m_ownCollection.copyFiles(records);
            const CString rule = storeRule();
            constexpr int rounds = 5;
            std::vector<double> times;
            qo::host::ReorganizePlan plan;
            for (int i = 0; i < rounds; ++i)
            {
                const auto start = Clock::now();
                plan = qo::host::PlanBuilder::build({rule, {}, "bench"}, records, progress);
                times.push_back(std::chrono::duration<double>(Clock::now() - start).count());
            }
            CReorganizeUtils::deleteRule(rule);
            std::sort(times.begin(), times.end());
            std::printf("%d %.6f, %d move, %d refused\n",
                        records.GetSize(),
                        times[rounds / 2],
                        plan.count(Verdict::move),
                        plan.count(Verdict::refused));
            return 0;
        });
}
