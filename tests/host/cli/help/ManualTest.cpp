#include "host/cli/QoCommand.h"
#include "support/Contains.h"

#include <regex>

namespace fs = std::filesystem;

namespace
{
/// What man shows of a page at 80 columns, and what it warns of.
QoCommand::Result showPage(const QoCommand& qo, const fs::path& page)
{
    const std::string call = "LC_ALL=C.UTF-8 MANWIDTH=80 MAN_KEEP_FORMATTING= man --warnings "
                             "-E UTF-8 -l '" +
                             page.string() + "' >'" + qo.dir.path("out") + "' 2>'" +
                             qo.dir.path("err") + "'";
    QoCommand::Result result;
    result.code = std::system(call.c_str()); // NOLINT(concurrency-mt-unsafe)
    // Long lines are broken at blanks.
    result.out = std::regex_replace(qo.dir.read("out"), std::regex("\\s+"), " ");
    result.err = qo.dir.read("err");
    return result;
}
} // namespace

TEST(Manual, EveryCommandHasAPageThatManShowsWithoutAWarning)
{
    if (!fs::exists("/usr/bin/man"))
        GTEST_SKIP() << "man is not installed";
    const QoCommand qo;
    const std::string folder = qo.dir.path("man");
    ASSERT_EQ(qo.run({"man", folder}).code, 0);
    std::map<std::string, std::string> pages;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
    {
        if (entry.is_directory())
            continue;
        const QoCommand::Result shown = showPage(qo, entry.path());
        EXPECT_EQ(shown.code, 0) << entry.path();
        EXPECT_EQ(shown.err, "") << entry.path();
        pages[entry.path().filename()] = shown.out;
    }
    for (const auto& command : qo.run({"help", "--json"}).json())
    {
        const std::string path = command["command"];
        const std::size_t end = path.find(' ', 3);
        const std::string name = path == "qo" ? path : "qo-" + path.substr(3, end - 3);
        const std::string& page = pages[name + ".1"];
        EXPECT_TRUE(contains(page, path)) << name;
        for (const auto& example : command["examples"])
            EXPECT_TRUE(contains(page, example["line"])) << name;
    }
    const std::string& settings = pages["qo-settings.5"];
    for (const auto& entry : qo.run({"config", "ls", "--json"}).json())
        EXPECT_TRUE(contains(settings, entry["key"]));
    EXPECT_FALSE(settings.find(qo.dir.path()) < settings.size()) << "the folders of this user";
    EXPECT_TRUE(contains(pages["qo-rules.5"], "ruleDefinition=\"{artist.name}\\\""));
    EXPECT_TRUE(contains(pages["qo.1"], "qo-names(7)"));
    EXPECT_EQ(fs::exists(folder + "/new-user"), false);
}
