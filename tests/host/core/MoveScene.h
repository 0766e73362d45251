#pragma once

#include "core/runs/MoveRun.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

/// Lets a run ask so often whether it shall stop, which it shall then.
inline qo::host::MoveRun::Events stopAfter(int questions)
{
    qo::host::MoveRun::Events events;
    events.stop = [left = questions]() mutable { return --left < 0; };
    return events;
}

/// Does something when the run asks for the third time: the first file waits under its temporary
/// name.
template <class Action>
qo::host::MoveRun::Events atThirdQuestion(Action action)
{
    qo::host::MoveRun::Events events;
    events.stop = [action, asked = 0]() mutable
    {
        if (++asked == 3)
            action();
        return false;
    };
    return events;
}

/// A folder with files that have places to go to, the plan for them and what the folder then holds.
class MoveScene
{
public:
    /// What folders hold, by path: for a folder its mode, for a file its mode, the time
    /// of its last change and its content.
    using Tree = std::map<std::string, std::string>;

    /// The bases are the targets too.
    explicit MoveScene(std::vector<std::string> bases);

    /// A file of its own content; returns its path.
    std::string add(const std::string& path, int base = 0);
    /// A file that is to move, both paths relative to their bases.
    void addMove(const std::string& from, const std::string& to, int fromBase = 0, int toBase = 0);
    /// One that cannot, since the place is taken.
    void addBlocked(const std::string& from, const std::string& to);
    /// Some two hundred files: new folders, emptied ones, chains, circles, other spellings and
    /// taken places; with two bases a part of them goes from one to the other.
    void addMany();

    std::string path(const std::string& relative, int base = 0) const
    {
        return m_bases[static_cast<std::size_t>(base)] + "/" + relative;
    }
    /// Of the files as they are now.
    qo::host::ReorganizePlan plan(const std::string& id) const;
    /// What all bases hold.
    Tree tree() const;
    /// Whether they hold that; tells the first difference, since a tree is long.
    testing::AssertionResult holds(const Tree& expected) const;
    /// What they hold when all that can move has moved, from what they hold before.
    Tree planned(const Tree& before) const;

private:
    struct Move
    {
        std::string from;
        std::string to;
        bool isBlocked;
    };

    static std::string describe(const std::string& path);
    static std::string two(int number);
    std::string addFolder(Tree& tree, const std::string& folder) const;

    std::vector<std::string> m_bases;
    std::vector<Move> m_moves;
    int m_contents = 0;
};

inline std::string MoveScene::describe(const std::string& path)
{
    struct stat st;
    EXPECT_EQ(::lstat(path.c_str(), &st), 0) << path;
    std::ostringstream text;
    text << std::oct << st.st_mode << std::dec;
    if (!S_ISREG(st.st_mode))
        return text.str();
    text << " " << st.st_mtim.tv_sec << "." << st.st_mtim.tv_nsec << " "
         << std::ifstream(path).rdbuf();
    return text.str();
}

inline std::string MoveScene::two(int number)
{
    return (number < 10 ? "0" : "") + std::to_string(number);
}

inline MoveScene::MoveScene(std::vector<std::string> bases) : m_bases(std::move(bases))
{
    for (const std::string& base : m_bases)
    {
        std::filesystem::create_directories(base);
        // What new folders inherit, although the process would give them less.
        std::filesystem::permissions(base, std::filesystem::perms(0775));
    }
}

inline std::string MoveScene::add(const std::string& relative, int base)
{
    const std::string file = path(relative, base);
    std::filesystem::create_directories(std::filesystem::path(file).parent_path());
    std::ofstream(file) << "content " << ++m_contents;
    EXPECT_TRUE(std::filesystem::exists(file)) << file;
    return file;
}

inline void
MoveScene::addMove(const std::string& from, const std::string& to, int fromBase, int toBase)
{
    m_moves.push_back({add(from, fromBase), path(to, toBase), false});
}

inline void MoveScene::addBlocked(const std::string& from, const std::string& to)
{
    m_moves.push_back({add(from), path(to), true});
}

inline void MoveScene::addMany()
{
    const int other = static_cast<int>(m_bases.size()) - 1;
    for (int i = 0; i < 80; ++i)
        addMove("old/" + std::to_string(i % 9) + "/" + two(i) + ".mp3",
                "new/Artist " + std::to_string(i % 7) + "/Album/" + two(i) + " title.mp3",
                0,
                i % 8 == 0 ? other : 0);
    for (int i = 0; i < 15; ++i)
    {
        addMove("swap/" + two(i) + "a", "swap/" + two(i) + "b");
        addMove("swap/" + two(i) + "b", "swap/" + two(i) + "a");
    }
    for (int i = 0; i < 20; ++i)
        addMove("chain/" + two(i), "chain/" + two(i + 1));
    for (int i = 0; i < 20; ++i)
        addMove("ring/" + std::to_string(i % 3) + "/" + two(i),
                "ring/" + std::to_string((i + 1) % 20 % 3) + "/" + two((i + 1) % 20));
    for (int i = 0; i < 10; ++i)
        addMove("case/song" + two(i), "case/Song" + two(i));
    addMove("case/Ame\xCC\x81lie", "case/Am\xC3\xA9lie");
    addMove("name", "name/of/a folder");
    addMove("Abba/1", "ABBA/1");
    for (int i = 0; i < 3; ++i)
    {
        add("new/taken" + two(i));
        addBlocked("blocked/" + two(i), "new/taken" + two(i));
    }
    for (int i = 0; i < 6; ++i)
        addMove("home/" + two(i), "back/" + two(i), other, 0);
    for (int i = 0; i < 30; ++i)
        addMove("deep/" + two(i) + "/x/y/file", "flat/" + two(i));
    add("stays/not emptied");
    addMove("stays/goes", "new/gone");
    std::filesystem::permissions(path("deep/01/x"), std::filesystem::perms(0750));
    std::filesystem::permissions(path("old/3"), std::filesystem::perms(0700));
}

inline qo::host::ReorganizePlan MoveScene::plan(const std::string& id) const
{
    qo::host::ReorganizePlan plan;
    plan.id = id;
    plan.targets = m_bases;
    plan.keptFolders = m_bases;
    for (const Move& move : m_moves)
    {
        qo::host::PlannedFile file;
        file.verdict = qo::host::PlannedFile::Verdict::move;
        file.from = move.from;
        file.to = move.to;
        file.recordId = "{" + move.from + "}";
        EXPECT_EQ(qo::host::markOf(move.from, file.mark), 0) << move.from;
        plan.files.push_back(file);
    }
    return plan;
}

inline MoveScene::Tree MoveScene::tree() const
{
    Tree tree;
    for (const std::string& base : m_bases)
    {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(base))
            tree[entry.path().native()] = describe(entry.path().native());
    }
    return tree;
}

inline MoveScene::Tree MoveScene::planned(const Tree& before) const
{
    Tree after = before;
    for (const Move& move : m_moves)
    {
        if (!move.isBlocked)
            after.erase(move.from);
    }
    for (const Move& move : m_moves)
    {
        if (move.isBlocked)
            continue;
        after[move.to] = before.at(move.from);
        addFolder(after, std::filesystem::path(move.to).parent_path());
    }
    // From behind, since what a folder holds stands behind it.
    for (auto entry = after.end(); entry != after.begin();)
    {
        --entry;
        const bool isFolder = entry->second.find(' ') == std::string::npos;
        const auto inside = after.lower_bound(entry->first + "/");
        if (isFolder && (inside == after.end() || !inside->first.starts_with(entry->first + "/")))
            entry = after.erase(entry);
    }
    return after;
}

/// With the rights of the folder above.
inline std::string MoveScene::addFolder(Tree& tree, const std::string& folder) const
{
    if (std::find(m_bases.begin(), m_bases.end(), folder) != m_bases.end())
        return describe(folder);
    const auto found = tree.find(folder);
    if (found != tree.end())
        return found->second;
    return tree[folder] = addFolder(tree, std::filesystem::path(folder).parent_path());
}

inline testing::AssertionResult MoveScene::holds(const Tree& expected) const
{
    const Tree found = tree();
    const auto [a, b] = std::mismatch(expected.begin(), expected.end(), found.begin(), found.end());
    if (a == expected.end() && b == found.end())
        return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << "expected " << (a == expected.end() ? "no more" : a->first + ": " + a->second)
           << ", found " << (b == found.end() ? "no more" : b->first + ": " + b->second);
}
