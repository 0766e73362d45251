#include "core/plan/ReorganizePlan.h"

#include "core/runs/MoveRun.h"
#include "host/core/MessageOf.h"
#include "support/Contains.h"
#include "support/DocExample.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

using namespace qo::host;

namespace
{
using Verdict = PlannedFile::Verdict;

ReorganizePlan somePlan()
{
    ReorganizePlan plan;
    plan.id = "20261121-201500";
    plan.made = "2026-11-21T20:15:00";
    plan.rule = "By artist";
    plan.targets = {"/music", "/"};
    plan.keptFolders = {"/music/kept"};
    plan.files = {{Verdict::move,
                   "/music/a \xFF\\\n\xEF\x80\xAF.mp3",
                   "/music/\xC3\xA9/b",
                   {1, ~0ULL, 3, -4},
                   "{id}",
                   "Music",
                   "LessTracks > {artist.name}\\",
                   ""},
                  {Verdict::refused, "/music/c", "/music/d", {}, "", "", "", "is taken"},
                  {Verdict::stay, "/music/e", "", {}, "", "", "", ""}};
    return plan;
}

std::string head(const std::string& version = "1")
{
    return "{\"plan\":" + version +
           ",\"id\":\"run\",\"targets\":[\"/music\"],\"kept\":[],\"new\":[{}]}\n";
}

std::string move(const std::string& from, const std::string& to, const std::string& size = "5")
{
    return "{\"do\":\"move\",\"from\":\"" + from + "\",\"to\":\"" + to + "\",\"mark\":[1,2," +
           size + ",4],\"later\":true}\n";
}
} // namespace

TEST(ReorganizePlan, ComesBackAsItWasWrittenWithTheRefusedFirst)
{
    const TempDir dir;
    ReorganizePlan plan = somePlan();
    plan.write(dir.path("plan"));
    const ReorganizePlan read = ReorganizePlan::read(dir.path("plan"));
    EXPECT_EQ(read.id, plan.id);
    EXPECT_EQ(read.made, plan.made);
    EXPECT_EQ(read.rule, plan.rule);
    EXPECT_EQ(read.targets, plan.targets);
    EXPECT_EQ(read.keptFolders, plan.keptFolders);
    std::swap(plan.files[0], plan.files[1]);
    ASSERT_EQ(read.files.size(), plan.files.size());
    for (std::size_t i = 0; i < plan.files.size(); ++i)
    {
        const PlannedFile& a = read.files[i];
        const PlannedFile& b = plan.files[i];
        EXPECT_EQ(a.verdict, b.verdict) << i;
        EXPECT_EQ(a.from, b.from) << i;
        EXPECT_EQ(a.to, b.to) << i;
        EXPECT_EQ(a.mark, b.mark) << i;
        EXPECT_EQ(a.recordId + a.kind + a.decidedBy + a.reason,
                  b.recordId + b.kind + b.decidedBy + b.reason)
            << i;
    }
    EXPECT_EQ(read.count(Verdict::move), 1);
}

TEST(ReorganizePlan, PlanThatCannotBeOneIsRefusedWithItsLine)
{
    const struct
    {
        const char* what;
        std::string text;
        const char* message;
    } cases[] = {
        {"empty", "", "it is empty"},
        {"no JSON", "hello\n", "it is damaged"},
        {"a list", "[1]\n", "it is damaged"},
        {"something else", "{\"a\":1}\n", "it does not begin as one"},
        {"version", head("2"), "it is of version 2, and only version 1 is understood"},
        {"id", "{\"plan\":1,\"id\":\"../x\",\"targets\":[],\"kept\":[]}\n", "it has no id"},
        {"targets", "{\"plan\":1,\"id\":\"x\",\"targets\":[\"a\"],\"kept\":[]}\n", "its folders"},
        {"relative", head() + move("a", "/music/b"), "line 2 names no file"},
        {"way up", head() + move("/a", "/music/../b"), "line 2 names no place to go to"},
        {"doubled slash", head() + move("/a", "/music//b"), "names no place to go to"},
        {"outside", head() + move("/a", "/musical/b"), "leads out of the folders of the plan"},
        {"the target itself", head() + move("/a", "/music"), "leads out of the folders"},
        {"no place", head() + move("/a", ""), "names no place to go to"},
        {"NUL", head() + move("/a\\u0000", "/music/b"), "names no file"},
        {"hidden slash", head() + move("/a", "/music/\xEF\x80\xAF.."), "names no place to go to"},
        {"backslash", head() + move("/a", "/music/..\\\\b"), "names no place to go to"},
        {"size", head() + move("/a", "/music/b", "-5"), "does not tell size"},
        {"great size",
         head() + move("/a", "/music/b", "9999999999999999999"),
         "does not tell size"},
        {"fraction", head() + move("/a", "/music/b", "5.5"), "does not tell size"},
        {"long", head() + std::string(1 << 20, ' ') + "{}\n", "line 2 is too long"},
        {"deep", head() + std::string(200'000, '[') + "\n", "line 2 is damaged"},
        {"torn", head() + "{\"do\":\"mo", "line 2 is damaged"}};
    const TempDir dir;
    for (const auto& c : cases)
    {
        dir.write("plan", c.text);
        const std::string message =
            messageOf([&] { (void)ReorganizePlan::read(dir.path("plan")); });
        EXPECT_TRUE(contains(message, c.message)) << c.what << ": " << message;
    }
    dir.write("plan", head() + move("/a", "/music/b"));
    EXPECT_NO_THROW((void)ReorganizePlan::read(dir.path("plan"))) << "with fields of later days";
    EXPECT_THROW((void)ReorganizePlan::read(dir.path("none")), HostError);
}

TEST(ReorganizePlan, DocumentShowsPlanAndJournalAsTheyAre)
{
    const TempDir dir;
    dir.write("plan", docExample("plans-and-journals.md", "plan"));
    ReorganizePlan::read(dir.path("plan")).write(dir.path("again"));
    EXPECT_EQ(dir.read("again"), dir.read("plan"));
    dir.write("removal", docExample("plans-and-journals.md", "removal"));
    EXPECT_EQ(MoveRun::open(dir.path("removal"))->start().kind, "rm");
    dir.write("journal", docExample("plans-and-journals.md", "journal"));
    const auto run = MoveRun::open(dir.path("journal"));
    EXPECT_TRUE(run->isFinished());
    EXPECT_EQ(run->moved(), 2U);
    EXPECT_TRUE(run->notApplied().empty());
}
