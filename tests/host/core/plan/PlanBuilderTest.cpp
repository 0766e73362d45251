#include "core/plan/PlanBuilder.h"

#include "host/core/LoadedCollection.h"
#include "host/core/RuleTexts.h"
#include "support/TestFileSystem.h"

#include <QoKernel/Tags.h>

#include <algorithm>
#include <cerrno>
#include <set>
#include <utility>

using namespace qo::host;
namespace fs = std::filesystem;
using Verdict = PlannedFile::Verdict;

namespace
{
const struct
{
    const char* from;
    const char16_t* artist;
    const char16_t* title;
    const char* verdict;
} songs[] = {
    {"a/1.mp3", u"Abba", u"SOS", "-> Abba/SOS.mp3"},
    {"Abba/Fernando.mp3", u"Abba", u"Fernando", "stays: it is there already"},
    {"b/2.mp3", u"Abba", u"Same", "refused: b/3.mp3 would go there too"},
    {"b/3.mp3", u"Abba", u"Same", "refused: b/2.mp3 would go there too"},
    {"b/4.mp3",
     u"Zebra",
     u"One",
     "refused: b/5.mp3 would go to Zebra/ONE.mp3, which the collection takes for "
     "the same name"},
    {"b/5.mp3",
     u"ZEBRA",
     u"ONE",
     "refused: b/4.mp3 would go to Zebra/One.mp3, which the collection takes for "
     "the same name"},
    {"b/6.mp3",
     u"ABBA",
     u"fernando",
     "refused: the collection takes Abba/Fernando.mp3 for the same name"},
    {"c/7.mp3", u"Abba", u"Taken", "refused: there is already a file of that name"},
    {"c/8.mp3", u"Abba", u"Changed", "refused: it has changed since it was scanned; run qo scan"},
    {"c/9.mp3",
     u"Abba",
     u"Gone",
     "refused: it cannot be found any more (No such file or directory); run qo scan"},
    {"c/10.mp3", u"Abba", u"Linked", "refused: it is a link"},
    {"c/11.mp3", u"Link", u"x", "refused: Link is a link"},
    {"c/12.mp3", u"Plain", u"x", "refused: Plain is no folder"},
    {"c/13.mp3", u"Trash", u"x", "refused: Trash is a trash"},
    {"c/14.mp3",
     u"",
     u"x",
     "refused: the file has no value for {artist.name}, which is to name its folder"},
    {"far/15.mp3", u"Abba", u"Far", "refused: far is a link"},
    {"Abba/stop.mp3", u"Abba", u"Taken2", "refused: there is already a file of that name"},
    {"d/16.mp3", u"Abba", u"stop", "refused: Abba/stop.mp3 is in its place and has to stay"},
    {"d/stop2.mp3", u"d", u"stop3", "-> d/stop3.mp3"},
    {"d/17.mp3", u"d", u"stop2", "-> d/stop2.mp3"},
    {"d/p.mp3", u"d", u"q", "-> d/q.mp3"},
    {"d/q.mp3", u"d", u"p", "-> d/p.mp3"},
    {"d/low.mp3", u"d", u"LOW", "-> d/LOW.mp3"},
    {"d/e\xCC\x81.mp3", u"d", u"\u00E9", "-> d/\xC3\xA9.mp3"},
    {"e/18.mp3", u"Abba", u"deep/er: x", "-> Abba/deep_er_ x.mp3"},
};

class PlanBuilderTest : public testing::Test
{
protected:
    PlanBuilderTest()
    {
        here.run([] { CReorganizeUtils::init(); });
    }
    ~PlanBuilderTest() override
    {
        here.run([] { CReorganizeUtils::destroy(); });
    }

    void addSong(const std::string& path, const char16_t* artist, const char16_t* title)
    {
        here.addSound(path);
        CMusicTagEx tag;
        tag.setArtist(artist, CTagAttribValue::SV_Edited, true);
        tag.setTitle(title, CTagAttribValue::SV_Edited, true);
        ASSERT_TRUE(tag.writeTag(here.dir.collPath(path))) << path;
    }
    /// A rule of one folder under its id.
    CString store(const RuleTexts& texts)
    {
        CReorganizeRule rule;
        addTexts(rule, texts);
        return store(rule);
    }
    CString store(const CReorganizeRule& rule)
    {
        CString id;
        here.run([&] { CReorganizeUtils::saveReorganizeRule(u"", &rule, u"test", id); });
        return id;
    }
    /// On the kernel's thread.
    ReorganizePlan make(const CString& rule, const CString& target = {}) const
    {
        QoFileDbItemArray records;
        CQoCollection::m_ownCollection.copyFiles(records);
        return PlanBuilder::build({rule, target, "1"}, records, *here.progress);
    }
    ReorganizePlan plan(const CString& rule, const CString& target = {}) const
    {
        return here.run([&] { return make(rule, target); });
    }
    std::string failure(ExitCode code, const CString& rule, const CString& target = {}) const
    {
        return here.messageOf([&] { make(rule, target); }, code);
    }
    /// Without the test's own folder.
    std::string shortened(std::string text) const
    {
        const std::string own = here.dir.path("music/");
        for (std::size_t at = text.find(own); at != std::string::npos; at = text.find(own))
            text.erase(at, own.size());
        return text;
    }
    /// "from" to "-> to" or the reason.
    std::map<std::string, std::string> verdicts(const ReorganizePlan& made) const
    {
        std::map<std::string, std::string> list;
        for (const PlannedFile& file : made.files)
        {
            EXPECT_EQ(file.verdict == Verdict::move, file.reason.empty()) << file.from;
            const std::string word = file.verdict == Verdict::stay ? "stays: " : "refused: ";
            list[shortened(file.from)] =
                shortened(file.reason.empty() ? "-> " + file.to : word + file.reason);
        }
        return list;
    }

    LoadedCollection here;
};
} // namespace

TEST_F(PlanBuilderTest, EveryFileHasAVerdictAndItsReason)
{
    here.dir.makeFolder("elsewhere");
    fs::create_directory_symlink(here.dir.path("elsewhere"), here.dir.path("music/far"));
    for (const auto& c : songs)
        addSong("music/" + std::string(c.from), c.artist, c.title);
    here.dir.write("music/c/cover.jpg", "a picture");
    here.dir.write("music/a/1.txt", "words");
    here.dir.write("music/c/14.log", "a log");
    here.dir.write("music/b/2.txt", "words");
    here.dir.write("music/b/2.cue", "a sheet");
    here.dir.write("music/c/cover.log", "a log");
    here.load();
    here.dir.write("music/Abba/Taken.mp3", "x");
    here.dir.write("music/Abba/Taken2.mp3", "x");
    here.dir.write("music/c/8.mp3", "x");
    here.dir.write("music/Plain", "x");
    here.dir.makeFolder("music/Trash/files");
    here.dir.makeFolder("music/Trash/info");
    fs::remove(here.dir.path("music/c/9.mp3"));
    fs::rename(here.dir.path("music/c/10.mp3"), here.dir.path("10.mp3"));
    fs::create_symlink(here.dir.path("10.mp3"), here.dir.path("music/c/10.mp3"));
    fs::create_directory_symlink("..", here.dir.path("music/Link"));

    const ReorganizePlan made = plan(store({u"{artist.name}\\", u"{track.name}", u""}));
    auto found = verdicts(made);
    EXPECT_EQ(made.files.size(), std::size(songs) + 6);
    for (const auto& c : songs)
        EXPECT_EQ(found[c.from], c.verdict) << c.from;
    EXPECT_EQ(found["c/cover.jpg"], "stays: the rule has no name for files of the kind Picture");
    EXPECT_EQ(found["a/1.txt"], "-> Abba/1.txt");
    EXPECT_EQ(found["c/14.log"], found["c/14.mp3"]);
    for (const char* beside : {"b/2.txt", "b/2.cue"})
        EXPECT_EQ(found[beside], "refused: b/2.mp3, beside which it lies, is refused") << beside;
    EXPECT_EQ(found["c/cover.log"], "stays: rules are about music, pictures and lyrics only");
    const auto place = [](const PlannedFile& file)
    {
        constexpr int ranks[] = {1, 2, 0};
        CString path = qo::fromSystemPath(file.from);
        return std::pair(ranks[static_cast<int>(file.verdict)], path.MakeLower());
    };
    EXPECT_TRUE(std::is_sorted(made.files.begin(),
                               made.files.end(),
                               [&](const PlannedFile& a, const PlannedFile& b)
                               { return place(a) < place(b); }));
    for (const PlannedFile& file : made.files)
        EXPECT_EQ(made.fault(file), "");
}

TEST_F(PlanBuilderTest, TargetIsAFolderOfTheCollection)
{
    addSong("music/a/1.mp3", u"Ann", u"x");
    here.load();
    const CString rule = store({nullptr, nullptr});
    const ReorganizePlan made = plan(rule, here.dir.collPath("music/new/place"));
    EXPECT_EQ(verdicts(made).at("a/1.mp3"), "-> new/place/a/1.mp3");
    EXPECT_EQ(made.targets, std::vector<std::string>{here.dir.path("music/new/place")});
    const std::set<std::string> kept(made.keptFolders.begin(), made.keptFolders.end());
    EXPECT_TRUE(kept.contains(here.dir.path("music")) &&
                kept.contains(here.dir.path("music/new/place")));
    EXPECT_EQ(verdicts(plan(rule)).at("a/1.mp3"), "stays: it is there already");
    EXPECT_EQ(plan(rule).targets, std::vector<std::string>{here.dir.path("music")});
    EXPECT_EQ(failure(ExitCode::notFound, rule, here.dir.collPath("elsewhere")),
              here.dir.path("elsewhere") + " is in no root folder of the collection");
    EXPECT_EQ(failure(ExitCode::notFound, u"none"), "there is no rule none");
    here.progress->cancel();
    EXPECT_EQ(failure(ExitCode::interrupted, rule), "stopped; no plan was made");
}

TEST_F(PlanBuilderTest, LargeArtistsGetFoldersAndWhatLiesBesideTheirMusicFollows)
{
    addSong("music/x/1.mp3", u"Big", u"One");
    addSong("music/x/2.mp3", u"Big", u"Two");
    addSong("music/x/untagged.mp3", u"", u"");
    addSong("music/y/3.mp3", u"Small", u"Three");
    here.dir.write("music/x/2.txt", "words");
    here.dir.write("music/x/2.lrc", "words in time");
    here.dir.write("music/x/front.jpg", "a picture");
    here.dir.write("music/y/front.jpg", "a picture");
    here.load();
    CReorganizeRule rule;
    const auto* const tracks = rule.addSeperateRule(new CArtistTracksSeperateRule(2), nullptr);
    addTexts(rule,
             {u"{artist.name}\\", u"{track.name}", nullptr, u"{track.name}"},
             tracks->getOutput(0));
    addTexts(
        rule, {u"small\\", u"{artist.name} {track.name}", u"{artist.name}"}, tracks->getOutput(1));
    addTexts(rule, {nullptr}, tracks->getOutput(2));
    const ReorganizePlan made = plan(store(rule));
    const std::map<std::string, std::string> expected{
        {"x/1.mp3", "-> Big/One.mp3"},
        {"x/2.mp3", "-> Big/Two.mp3"},
        {"x/2.txt", "-> Big/Two.txt"},
        {"x/2.lrc", "-> Big/Two.lrc"},
        {"x/untagged.mp3", "stays: it is there already"},
        {"x/front.jpg", "-> Big/front.jpg"},
        {"y/3.mp3", "-> small/Small Three.mp3"},
        {"y/front.jpg", "-> small/Small.jpg"}};
    EXPECT_EQ(verdicts(made), expected);
    const auto ofKind = [&made](const char* kind)
    {
        return std::find_if(made.files.begin(),
                            made.files.end(),
                            [&](const PlannedFile& file) { return file.kind == kind; });
    };
    const auto other = ofKind("");
    ASSERT_NE(other, made.files.end());
    EXPECT_EQ(other->decidedBy,
              "MoreEqualTracks > {artist.name}\\ > Music {track.name} > goes with its track");
    const auto words = ofKind("Lyrics");
    ASSERT_NE(words, made.files.end());
    EXPECT_EQ(words->decidedBy, "MoreEqualTracks > {artist.name}\\ > Lyrics {track.name}");
    EXPECT_EQ(words->recordId, here.records().at("music/x/2.txt"));
    FileMark mark;
    ASSERT_EQ(markOf(words->from, mark), 0);
    EXPECT_EQ(words->mark, mark);
}

TEST_F(PlanBuilderTest, FoldersHaveOneSpellingEach)
{
    // On the disk, by most files, by the first file.
    addSong("music/in/1.mp3", u"aBBA", u"1");
    addSong("music/Abba/2.mp3", u"Abba", u"2");
    addSong("music/in/3.mp3", u"queen", u"3");
    addSong("music/in/4.mp3", u"Queen", u"4");
    addSong("music/in/5.mp3", u"Queen", u"5");
    addSong("music/in/6.mp3", u"Zaz", u"6");
    addSong("music/in/7.mp3", u"ZAZ", u"7");
    here.load();
    const CString rule = store({u"{artist.name}\\", u"{track.name}"});
    const ReorganizePlan made = plan(rule);
    const std::map<std::string, std::string> expected{{"in/1.mp3", "-> Abba/1.mp3"},
                                                      {"Abba/2.mp3", "stays: it is there already"},
                                                      {"in/3.mp3", "-> Queen/3.mp3"},
                                                      {"in/4.mp3", "-> Queen/4.mp3"},
                                                      {"in/5.mp3", "-> Queen/5.mp3"},
                                                      {"in/6.mp3", "-> Zaz/6.mp3"},
                                                      {"in/7.mp3", "-> Zaz/7.mp3"}};
    EXPECT_EQ(verdicts(made), expected);
    for (const PlannedFile& file : made.files)
    {
        fs::create_directories(fs::path(file.to).parent_path());
        fs::rename(file.from, file.to);
    }
    here.load();
    EXPECT_EQ(plan(rule).count(Verdict::move), 0);
}

TEST_F(PlanBuilderTest, WhatCannotBeSeenHasNotChangedAndImportersSortNothing)
{
    addSong("music/in/1.mp3", u"Ann", u"1");
    here.load();
    const CString rule = store({u"{artist.name}\\", u"{track.name}"});
    const TestFileSystem closed(
        [](const std::string& call, const CString& path)
        { return call == "look" && qo::toSystemPath(path).ends_with("/1.mp3") ? EACCES : 0; });
    EXPECT_EQ(verdicts(plan(rule)).at("in/1.mp3"),
              "refused: it cannot be looked at: Permission denied");
    const CString importer = store({u"{artist.name}\\", u"{date.eu}"});
    EXPECT_EQ(failure(ExitCode::failed, importer),
              "the rule " + qo::toUtf8(importer) +
                  " is for what is imported only, and no collection can be sorted by it");
}
