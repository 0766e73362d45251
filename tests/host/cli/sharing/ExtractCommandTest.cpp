#include "host/cli/QoCommand.h"

namespace
{
TEST(ExtractCommand, ShowsWhatIsInAnExtract)
{
    const QoCommand qo;
    const std::string song = qo.addTrack("Kino/01.mp3", {"artist=Kino", "title=Zvezda"});
    EXPECT_EQ(qo.scan().code, 0);
    const std::string file = qo.dir.path("mine.txt");
    qo.expect({"extract", "write", qo.dir.path()}, 2, "is a folder");
    qo.expect({"extract", "write", "/dev/null", "--yes"}, 2, "cannot be replaced");
    qo.expect({"extract", "write", file}, 0, "(1 file)");
    const QoCommand::Result shown = qo.run({"extract", "show", file});
    EXPECT_EQ(shown.code, 0);
    EXPECT_NE(shown.out.find("Kino - Zvezda"), std::string::npos) << shown.out;
    EXPECT_NE(shown.out.find(song + "\n"), std::string::npos) << shown.out;
}
} // namespace
