#include "core/moved/MovedTwins.h"

#include "support/Words.h"

#include <QoKernel/Kernel.h>

#include <gtest/gtest.h>

#include <string>

using namespace qo::host;

namespace
{
/// "/a/1.mp3#2": the path, its feature, and after a second "#" the title.
struct Twins
{
    explicit Twins(const std::string& words)
    {
        for (const std::string& word : wordsOf(words))
        {
            const std::size_t feature = word.find('#');
            const std::size_t title = word.find('#', feature + 1);
            files.push_back({qo::fromSystemPath(word.substr(0, feature)),
                             {std::stoi(word.substr(feature + 1, title - feature - 1))}});
            titles.push_back(
                qo::fromUtf8(title == std::string::npos ? "" : word.substr(title + 1)));
        }
    }
    std::vector<FeaturedFile> files;
    std::vector<CString> titles;
};

/// "from>to" for a pair, "from?2" for one that has two candidates.
std::string pairsOf(const std::string& goneWords, const std::string& foundWords)
{
    const Twins gone(goneWords);
    const Twins found(foundWords);
    const CString kept = qo::fromSystemPath("/kept");
    MovedTwins twins(gone.files,
                     found.files,
                     {[&](const CString& folder) { return folder != kept; },
                      [&](std::size_t i) { return gone.titles[i]; },
                      [&](std::size_t i) { return found.titles[i]; }});
    twins.pair();
    std::string text;
    for (std::size_t i = 0; i < gone.files.size(); ++i)
    {
        const std::size_t twin = twins.twinOf(i);
        const std::size_t left = twins.candidatesFor(i, 10).size();
        text += (text.empty() ? "" : " ") + qo::toSystemPath(gone.files[i].path);
        if (twin != MovedTwins::none)
            text += ">" + qo::toSystemPath(found.files[twin].path);
        else
            text += "?" + std::to_string(left);
    }
    return text;
}
} // namespace

TEST(MovedTwins, EqualFilesAreToldApartByMoreThanWhatTheyHold)
{
    const struct
    {
        const char* why;
        const char* gone;
        const char* found;
        const char* pairs;
    } cases[] = {
        {"the feature alone", "/a/1#1 /a/2#2", "/b/x#2", "/a/1?0 /a/2>/b/x"},
        {"names", "/b/1#1 /b/2#1", "/c/2#1 /c/1#1", "/b/1>/c/1 /b/2>/c/2"},
        {"a name in other case is another", "/b/a#1 /b/b#1", "/c/A#1 /c/B#1", "/b/a?2 /b/b?2"},
        {"the one left over", "/b/1#1 /b/2#1", "/c/1#1 /d/new#1", "/b/1>/c/1 /b/2>/d/new"},
        {"where the folder's other files went",
         "/a/0#9 /a/cover#1 /b/0#8 /b/cover#1",
         "/x/0#9 /x/cover#1 /y/0#8 /y/cover#1",
         "/a/0>/x/0 /a/cover>/x/cover /b/0>/y/0 /b/cover>/y/cover"},
        {"a new name in the folder's new place",
         "/a/0#9 /a/one#1 /b/0#8 /b/two#1",
         "/x/0#9 /x/eins#1 /y/0#8 /y/zwei#1",
         "/a/0>/x/0 /a/one>/x/eins /b/0>/y/0 /b/two>/y/zwei"},
        {"where the folder above went",
         "/a/cd1/0#9 /a/cd2/1#1 /b/cd1/0#8 /b/cd2/1#1",
         "/x/cd1/0#9 /x/cd2/1#1 /y/cd1/0#8 /y/cd2/1#1",
         "/a/cd1/0>/x/cd1/0 /a/cd2/1>/x/cd2/1 /b/cd1/0>/y/cd1/0 /b/cd2/1>/y/cd2/1"},
        {"a folder that is still there has not moved",
         "/kept/0#9 /kept/1#1",
         "/x/0#9 /x/1#1 /y/1#1",
         "/kept/0>/x/0 /kept/1?2"},
        {"folders of equal name",
         "/a/p/1#1 /a/q/1#1",
         "/b/q/1#1 /b/p/1#1",
         "/a/p/1>/b/p/1 /a/q/1>/b/q/1"},
        {"titles", "/a/1#1#One /b/1#1#Two", "/c/1#1#Two /d/1#1#One", "/a/1>/d/1 /b/1>/c/1"},
        {"copies are nobody's", "/a/1#1", "/b/1#1 /c/1#1", "/a/1?2"},
        {"one file is nobody's twice", "/a/1#1 /b/1#1", "/c/1#1", "/a/1?1 /b/1?1"}};
    for (const auto& c : cases)
        EXPECT_EQ(pairsOf(c.gone, c.found), c.pairs) << c.why;
}

TEST(MovedTwins, ManyFilesAlikeTakeNoTimeEachWithEach)
{
    constexpr int count = 20000;
    std::vector<FeaturedFile> gone;
    std::vector<FeaturedFile> found;
    for (int i = 0; i < count; ++i)
    {
        gone.push_back({qo::fromSystemPath("/a/" + std::to_string(i)), {1}});
        found.push_back({qo::fromSystemPath("/b/" + std::to_string(count - 1 - i)), {1}});
    }
    MovedTwins twins(gone,
                     found,
                     {[](const CString&) { return true; },
                      [](std::size_t) { return CString(); },
                      [](std::size_t) { return CString(); }});
    twins.pair();
    for (std::size_t i = 0; i < gone.size(); ++i)
        ASSERT_EQ(twins.twinOf(i), gone.size() - 1 - i);
}
