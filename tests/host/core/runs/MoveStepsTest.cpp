#include "core/runs/MoveSteps.h"

#include "core/base/SystemPath.h"
#include "core/plan/TargetName.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>

using namespace qo::host;

namespace
{
using StepKind = MoveStep::Kind;

/// A disk that exists in thought alone: what lies under each path, and the folders.
struct Disk
{
    std::map<std::string, std::size_t> files;
    std::set<std::string> folders;

    bool isFree(const std::string& path) const
    {
        return !files.contains(path) && !folders.contains(path);
    }
    bool isEmpty(const std::string& folder) const
    {
        const auto inside = [&](const std::string& path) { return isBelow(path, folder); };
        return std::none_of(files.begin(),
                            files.end(),
                            [&](const auto& file) { return inside(file.first); }) &&
               std::none_of(folders.begin(), folders.end(), inside);
    }
    /// Whether the step could be done; then it is.
    bool perform(const MoveStep& step)
    {
        if (step.kind == StepKind::removeFolder)
            return isEmpty(step.to) && folders.erase(step.to) == 1;
        if (!isFree(step.to) || !folders.contains(parentOf(step.to)))
            return false;
        if (step.kind == StepKind::makeFolder)
            return folders.insert(step.to).second;
        const auto file = files.find(step.from);
        if (file == files.end() || file->second != step.file)
            return false;
        files.erase(file);
        return files.emplace(step.to, step.file).second;
    }
};

MoveStep folderStep(StepKind kind, const std::string& path)
{
    return {kind, 0, {}, path, {}, false};
}

/// Performs the steps on a disk that holds the files and what they need, and returns what is wrong.
std::string faultOf(const std::vector<MovedFile>& files,
                    const std::vector<std::string>& make,
                    const std::vector<std::string>& remove,
                    std::size_t* temporary = nullptr)
{
    Disk disk;
    const auto addFolders = [&](const std::string& path)
    {
        for (std::string folder = parentOf(path); disk.folders.insert(folder).second;)
            folder = parentOf(folder);
    };
    for (std::size_t i = 0; i < files.size(); ++i)
    {
        disk.files[files[i].from] = i;
        addFolders(files[i].from);
    }
    // What the plan does not make is there.
    const auto isMade = [&](const std::string& path)
    { return std::find(make.begin(), make.end(), path) != make.end(); };
    const auto addNeeded = [&](std::string path)
    {
        while (isMade(parentOf(path)))
            path = parentOf(path);
        addFolders(path);
    };
    for (const MovedFile& file : files)
        addNeeded(file.to);
    for (const std::string& folder : make)
        addNeeded(folder);
    std::vector<MoveStep> makes;
    std::vector<MoveStep> removes;
    for (const std::string& path : make)
        makes.push_back(folderStep(StepKind::makeFolder, path));
    for (const std::string& path : remove)
        removes.push_back(folderStep(StepKind::removeFolder, path));
    const auto steps = MoveSteps::inOrder(files, makes, removes, "id");
    for (const MoveStep& step : steps)
    {
        if (!disk.perform(step))
            return "cannot be done: " + step.from + " -> " + step.to;
    }
    for (std::size_t i = 0; i < files.size(); ++i)
    {
        const auto found = disk.files.find(files[i].to);
        if (found == disk.files.end() || found->second != i)
            return "is not in its place: " + files[i].to;
    }
    for (const std::string& path : remove)
    {
        if (disk.folders.contains(path))
            return "is still there: " + path;
    }
    if (temporary)
        *temporary = steps.size() - files.size() - make.size() - remove.size();
    return {};
}
} // namespace

TEST(MoveSteps, EachStepFindsItsPlaceFree)
{
    const struct
    {
        const char* what;
        std::vector<MovedFile> files;
        std::vector<std::string> make;
        std::vector<std::string> remove;
        std::size_t temporary;
    } cases[] = {
        {"swap", {{"/a", "/b", {}, {}}, {"/b", "/a", {}, {}}}, {}, {}, 1},
        {"chain", {{"/a", "/b", {}, {}}, {"/b", "/c", {}, {}}}, {}, {}, 0},
        {"case", {{"/d/a", "/d/A", {}, {}}}, {}, {}, 1},
        {"unicode form", {{"/e\xCC\x81", "/\xC3\xA9", {}, {}}}, {}, {}, 1},
        {"case swap", {{"/a", "/A", {}, {}}, {"/A", "/a", {}, {}}}, {}, {}, 2},
        {"ring by key", {{"/s/p", "/s/Q", {}, {}}, {"/s/q", "/s/P", {}, {}}}, {}, {}, 1},
        {"folder in a file's place", {{"/a", "/a/b/c", {}, {}}}, {"/a/b", "/a"}, {}, 1},
        {"file in a folder's place", {{"/a/b/c", "/a", {}, {}}}, {}, {"/a", "/a/b"}, 1},
        {"folder in the place of a file that takes another's",
         {{"/a/x", "/b/c", {}, {}}, {"/b", "/d", {}, {}}, {"/d", "/b/e", {}, {}}},
         {"/b"},
         {"/a"},
         1},
        {"circle behind a folder that another file needs first",
         {{"/1", "/f/1", {}, {}}, {"/f", "/g", {}, {}}, {"/g", "/f/g", {}, {}}},
         {"/f"},
         {},
         1},
        {"circle through a folder that goes",
         {{"/f/x", "/y", {}, {}}, {"/y", "/f", {}, {}}, {"/f/z/z", "/z", {}, {}}},
         {},
         {"/f", "/f/z"},
         1},
    };
    for (const auto& c : cases)
    {
        std::size_t temporary = 0;
        EXPECT_EQ(faultOf(c.files, c.make, c.remove, &temporary), "") << c.what;
        EXPECT_EQ(temporary, c.temporary) << c.what;
    }
}

TEST(MoveSteps, NoTwoFilesEverHavePlacesOfOneKey)
{
    const std::vector<MovedFile> files = {{"/s/a", "/s/Q", {}, {}},
                                          {"/s/q", "/t/Z", {}, {}},
                                          {"/s/p", "/s/R", {}, {}},
                                          {"/s/r", "/s/P", {}, {}},
                                          {"/s/x", "/s/X", {}, {}}};
    std::map<std::string, std::string> places; // by key
    for (const MovedFile& file : files)
        places[sameNameKey(file.from)] = file.from;
    for (const MoveStep& step : MoveSteps::inOrder(files, {}, {}, "id"))
    {
        places.erase(sameNameKey(step.from));
        EXPECT_TRUE(places.emplace(sameNameKey(step.to), step.to).second) << step.to;
    }
    EXPECT_EQ(places.size(), files.size());
}

TEST(MoveSteps, AnyPermutationWithHolesAndNewFoldersWorks)
{
    for (unsigned seed = 0; seed < 400; ++seed)
    {
        std::mt19937 random(seed);
        const std::size_t count = 1 + random() % 40;
        std::vector<std::string> places;
        for (std::size_t i = 0; i < count * 3 / 2 + 1; ++i)
            places.push_back("/" + std::to_string(random() % 5) + "/" + std::to_string(i));
        std::vector<std::string> targets = places;
        // Some files become folders of others.
        std::vector<std::string> make;
        for (std::size_t i = 0; i < count && random() % 2 == 0; ++i)
        {
            const std::size_t at = random() % targets.size();
            if (std::find(places.begin(), places.end(), targets[at]) == places.end())
                continue;
            make.push_back(targets[at]);
            targets[at] += "/inside";
        }
        std::shuffle(targets.begin(), targets.end(), random);
        std::vector<MovedFile> files;
        for (std::size_t i = 0; i < count; ++i)
            files.push_back({places[i], targets[i], {}, {}});
        // A place without a file that becomes a folder is free anyway.
        std::vector<MovedFile> back;
        for (const MovedFile& file : files)
            back.push_back({file.to, file.from, {}, {}});
        EXPECT_EQ(faultOf(files, make, {}), "") << "seed " << seed;
        std::vector<std::string> used;
        for (const std::string& folder : make)
        {
            if (std::any_of(back.begin(),
                            back.end(),
                            [&](const MovedFile& file) { return isBelow(file.from, folder); }))
                used.push_back(folder);
        }
        EXPECT_EQ(faultOf(back, {}, used), "") << "the way back, seed " << seed;
    }
}

TEST(MoveSteps, LongChainsAndGreatCirclesTakeNoLongerThanTheirLength)
{
    constexpr std::size_t count = 100'000;
    std::vector<MovedFile> files;
    for (std::size_t i = 0; i < count; ++i)
        files.push_back(
            {"/ring/" + std::to_string(i), "/ring/" + std::to_string((i + 1) % count), {}, {}});
    const auto steps = MoveSteps::inOrder(files, {}, {}, "id");
    EXPECT_EQ(steps.size(), count + 1);
    EXPECT_EQ(steps.front().to, "/ring/.qo-id-0");
    EXPECT_EQ(steps.back().from, steps.front().to);
}
