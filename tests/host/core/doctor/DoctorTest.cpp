#include "core/doctor/Doctor.h"

#include "host/core/LoadedCollection.h"
#include "support/LeftTemporary.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>

using namespace qo::host;
namespace fs = std::filesystem;

namespace
{
/// How many there are of each topic.
using Topics = std::map<std::string, std::size_t>;

Topics topicsOf(const Doctor& doctor)
{
    Topics topics;
    for (const Finding& finding : doctor.findings())
    {
        topics[finding.topic] += finding.count;
        EXPECT_FALSE(finding.what.empty() || finding.mend.empty() || finding.examples.empty());
    }
    return topics;
}

Doctor examined(const LoadedCollection& here, bool mends = false)
{
    return here.run(
        [&]
        {
            Doctor doctor(*here.session, mends);
            if (doctor.examineData())
                doctor.examineCollection(*here.progress);
            return doctor;
        });
}
} // namespace

TEST(Doctor, FindsWhatIsNotAsItShouldBeAndMendsWhatCannotHarm)
{
    const LoadedCollection here;
    for (const char* const name :
         {"music/a/1.mp3", "music/a/2.mp3", "music/b/3.mp3", "music/c.mp3"})
        here.addSound(name);
    here.load();
    EXPECT_EQ(topicsOf(examined(here)), (Topics{{"snapshots", 1}}));
    EXPECT_TRUE(examined(here, true).isAllWell());
    EXPECT_EQ(topicsOf(examined(here)), Topics());

    fs::remove(here.dir.path("music/a/1.mp3"));
    std::ofstream(here.dir.path("music/b/3.mp3"), std::ios::app) << "more";
    here.addSound("music/new.mp3");
    here.addSound("music/C.mp3");
    const std::string left = "music/a/" + leftTemporaryBeside(here.dir.path("music/a/2.mp3"));
    here.dir.write(left, "x");
    Topics found = {{"gone", 1}, {"changed", 1}, {"new", 1}, {"case", 1}, {"temporary", 1}};
    EXPECT_EQ(topicsOf(examined(here)), found);
    EXPECT_FALSE(examined(here, true).isAllWell());
    EXPECT_FALSE(fs::exists(here.dir.path(left)));
    found.erase("temporary");
    EXPECT_EQ(topicsOf(examined(here)), found);

    fs::rename(here.dir.path("music"), here.dir.path("away"));
    EXPECT_EQ(topicsOf(examined(here)), (Topics{{"roots", 1}}));
}
