#include "host/cli/QoCommand.h"
#include "support/Contains.h"

namespace fs = std::filesystem;

TEST(MovedOffers, NoRecordGoesUnaskedBecauseItsFileIsUnclear)
{
    const QoCommand qo;
    const std::string file = qo.addSound("a/1.mp3");
    ASSERT_EQ(qo.run({"scan", "--find-moved", qo.music()}).code, 0);
    const auto before = qo.ids();
    qo.dir.makeFolder("music/b");
    fs::copy_file(file, qo.music("b/x.mp3"));
    fs::rename(file, qo.music("b/y.mp3"));
    qo.expect(
        {"scan", "--find-moved"},
        7,
        "1 unclear record will go with its id, and the files that it may belong to will count "
        "as new. Not done without --yes.");
    EXPECT_EQ(qo.ids(), before);
    qo.expect({"scan", "--find-moved", "--dry-run"}, 0, file + " may be any of these:");
    EXPECT_EQ(qo.ids(), before);
    qo.expect({"scan", "--find-moved", "--yes"}, 0, "2 new, 0 changed, 1 gone, 0 moved");
}

TEST(FileTargets, WhatIsNamedAsAFolderHasToBeOne)
{
    const QoCommand qo;
    const std::string file = qo.addSound("a/1.mp3");
    ASSERT_EQ(qo.scan().code, 0);
    const std::string out = qo.dir.path("out.mp3");
    fs::copy_file(file, out);
    const std::string none = "there is no folder " + qo.music("new");
    qo.expectRefusals("",
                      {{{"add", out, "--to", qo.music("new")}, 4, none},
                       {{"add", out, "--to", qo.music("new/")}, 4, none},
                       {{"add", "--move", out, "--to", qo.music("new")}, 4, none},
                       {{"mv", file, qo.music("new/")}, 4, none},
                       {{"mv", file, qo.music("new/.")}, 4, none},
                       {{"mv", file, qo.music("a"), qo.music("new")}, 4, none},
                       {{"mv", "--dry-run", file, qo.music("new/")}, 4, none},
                       {{"add", out, "--to", file}, 2, file + " is no folder"}});
    EXPECT_EQ(qo.names(), std::vector<std::string>{"a/1.mp3"});
    EXPECT_TRUE(fs::exists(out));
    EXPECT_FALSE(fs::exists(qo.music("new")));
    EXPECT_EQ(qo.run({"mv", file, qo.music("new")}).code, 0) << "a new name for the file";
}
