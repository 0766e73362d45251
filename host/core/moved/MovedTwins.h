#pragma once

#include <QoKernel/Kernel.h>

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <unordered_map>
#include <vector>

namespace qo::host
{
/// A file with the features of its content, as numbers: one for its size and head, say, another for
/// its size and write time. Two files that share a feature may be the same file.
struct FeaturedFile
{
    CString path;
    std::vector<int> features; ///< each once
};

/// Pairs files that are gone with files that were found; each file is in one pair at most. Two
/// files that share a feature with each other and with no third file are a pair. Where several
/// share a feature, further evidence decides, the strongest first:
///
/// 1. the place below a folder that has moved, 2. the name, 3. the folder that theirs became,
/// 4. the end of the path, 5. the title, 6. being the only ones left.
///
/// A folder has moved to where most of its paired files went, if it is no longer there. Each new
/// pair may show where a folder went, so after each round the strongest evidence is asked again.
///
/// Example: /a/intro, /a/cover, /b/outro and /b/cover are gone; /x/intro, /x/cover, /y/outro and
/// /y/cover were found; all four covers share a feature. The intros and the outros are paired at
/// once, which shows that /a became /x and /b became /y. Then the place decides: /a/cover would be
/// /x/cover now, and is. Had both covers of /x and /y been renamed, the folder would decide.
///
/// What remains open stays unpaired: if /a/1 is gone and its copies /b/1 and /c/1 were found,
/// nothing says which of them it is. The time grows with the number of features, even if all files
/// share one. Not for several threads at once.
class MovedTwins
{
public:
    /// Asked only when the answer matters; for a title once for each file.
    struct Questions
    {
        std::function<bool(const CString& folder)> isFolderGone;
        /// Titles with artist, album and track; empty for an untagged file.
        std::function<CString(std::size_t gone)> titleOfGone;
        std::function<CString(std::size_t found)> titleOfFound;
    };

    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    MovedTwins(std::vector<FeaturedFile> gone,
               std::vector<FeaturedFile> found,
               Questions questions);

    void pair();
    /// The index of the found file, or none.
    std::size_t twinOf(std::size_t gone) const { return m_gone[gone].twin; }
    /// The first unpaired files that share a feature with it.
    std::vector<std::size_t> candidatesFor(std::size_t gone, std::size_t most);

private:
    struct Entry
    {
        FeaturedFile file;
        std::size_t twin = none;
        std::optional<CString> title;
    };
    using Entries = std::vector<Entry>;
    /// Where the files of a folder went.
    class Places
    {
    public:
        void count(const CString& place);

        CString best; ///< where most of them went
        bool isTie = false;

    private:
        std::map<CString, int> m_files;
        int m_most = 0;
    };
    /// What a file shows beside its features; empty when it shows nothing of the kind.
    using Evidence = std::function<std::optional<CString>(std::size_t)>;
    class Round;

    bool pairBy(const Evidence& ofGone, const Evidence& ofFound);
    bool pairLone();
    bool pairByPlace();
    bool pairByName();
    bool pairByFolder();
    bool pairByPathEnd();
    bool pairByTitle();

    void learnFolder(const CString& from, const CString& to);
    std::optional<CString> folderNow(const CString& folder);
    std::optional<CString> becameOf(const CString& folder);

    Entries m_gone;
    Entries m_found;
    Questions m_questions;
    std::vector<std::size_t> m_openGone;
    std::vector<std::size_t> m_openFound;
    std::map<CString, Places> m_folders;
    std::map<CString, bool> m_isFolderGone;
    std::unordered_map<int, std::vector<std::size_t>>
        m_leftOver; ///< unpaired found files by feature
};
} // namespace qo::host
