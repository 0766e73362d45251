#include "host/cli/help/SampleHome.h"
#include "support/PtyShell.h"

#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <vector>

namespace
{
struct Call
{
    std::string line;  ///< as it is typed, without the prompt
    std::string shown; ///< what the README has below it
};

/// The calls of the README's blocks of "console", in their order.
std::vector<Call> tourCalls()
{
    std::ifstream file(QO_SOURCE_DIR "/README.md");
    std::vector<Call> calls;
    bool isConsole = false;
    bool goesOn = false;
    for (std::string line; std::getline(file, line);)
    {
        if (line.starts_with("```"))
            isConsole = line == "```console";
        else if (isConsole && line.starts_with("$ "))
            calls.push_back({line.substr(2), ""});
        else if (isConsole && goesOn)
            calls.back().line += "\n" + line;
        else if (isConsole && !line.empty())
            calls.back().shown += line + "\n";
        const bool isTyped = goesOn || line.starts_with("$ ");
        goesOn = isConsole && isTyped && line.ends_with('\\');
    }
    return calls;
}

/// Without what differs from run to run: times, sizes, dates, ids, blank lines, and the dots of
/// lines that are left out.
std::string steady(std::string text)
{
    const std::vector<std::pair<const char*, const char*>> masks = {
        {"\r", ""},
        {"[0-9]{8}[-_][0-9]{6}[-_0-9]*", "ID"},
        {"[0-9]{4}-[0-9]{2}-[0-9]{2}[T ][0-9:.]+Z?", "TIME"},
        {"[0-9.]+ (s|ms|B|KiB|MiB)\\b", "AMOUNT"},
        {"\"(size|bitrate|duration|id)\":[0-9]+", "\"$1\":N"},
        {R"("addedBy":"[^"]*")", R"("addedBy":"USER")"},
        {"version [0-9.]+", "version N"},
        {" +\n", "\n"},
        {"\n{2,}", "\n"}};
    for (const auto& [pattern, with] : masks)
        text = std::regex_replace(text, std::regex(pattern), with);
    return text;
}

/// Whether the lines of the README are those that were shown; "..." stands for any number of them.
bool fits(const std::string& readme, const std::string& shown)
{
    std::size_t at = 0;
    bool isAnywhere = false;
    std::istringstream lines(readme);
    for (std::string line; std::getline(lines, line);)
    {
        if (line == "...")
        {
            isAnywhere = true;
            continue;
        }
        const std::size_t found = isAnywhere ? shown.find(line + "\n", at) : at;
        if (found == std::string::npos || shown.compare(found, line.size() + 1, line + "\n") != 0)
            return false;
        at = found + line.size() + 1;
        isAnywhere = false;
    }
    return isAnywhere || at == shown.size();
}
} // namespace

TEST(Tour, ReadmeShowsWhatTheCommandsPrint)
{
    const SampleHome home;
    const std::vector<Call> calls = tourCalls();
    ASSERT_GT(calls.size(), 25U);
    std::string all;
    for (const Call& call : calls)
    {
        home.dir.write("script",
                       "cd \"$(cat ~/../../folder 2>/dev/null || echo ~)\"\n" + call.line +
                           "\npwd >~/../../folder\n");
        PtyShell shell({"/bin/bash", home.dir.path("script")},
                       {"HOME=" + home.dir.path("home/ann"),
                        "PATH=" + home.dir.path("bin") + ":/usr/bin:/bin",
                        "LC_ALL=C.UTF-8",
                        "TZ=UTC",
                        "TERM=dumb",
                        "PAGER=cat"},
                       400); // The paths are longer here than at home, and none is to be cut.
        const std::string shown = home.shown(shell.readTo(""));
        EXPECT_TRUE(fits(steady(call.shown), steady(shown))) << "$ " << call.line << "\n" << shown;
        all += "$ " + call.line + "\n" + std::regex_replace(shown, std::regex("\r"), "") + "\n";
    }
    // For whoever changes the README: all that was shown.
    home.dir.write("tour", all);
    if (HasFailure())
        std::filesystem::copy_file(home.dir.path("tour"),
                                   QO_TEST_TEMP "/tour",
                                   std::filesystem::copy_options::overwrite_existing);
}
