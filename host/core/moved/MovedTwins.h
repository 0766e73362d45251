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
/// A file with the marks of what it holds. Who shares a mark may be the same file.
struct MarkedFile
{
    CString path;
    std::vector<int> marks; ///< each once
};

/// Pairs files that are gone with files that were found, one with one at most. Who shares a mark
/// with one alone is paired with that. Among several it goes by what else they share, the strongest
/// first: the place below a folder that moved, the name, the folder that theirs became, the end of
/// the path, the title; then who is left. A folder is taken to have moved where most of its paired
/// files went. What that leaves undecided stays unpaired. Time goes with the number of marks, even
/// if all files share one. Not for several threads at once.
class MovedTwins
{
public:
    /// Asked only while it matters, the titles once for each file.
    struct Questions
    {
        std::function<bool(const CString& folder)> isFolderGone;
        /// Titles with artist, album and track; empty for an untagged file.
        std::function<CString(std::size_t gone)> titleOfGone;
        std::function<CString(std::size_t found)> titleOfFound;
    };

    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    MovedTwins(std::vector<MarkedFile> gone, std::vector<MarkedFile> found, Questions questions);

    void pair();
    /// The index of the found file, or none.
    std::size_t twinOf(std::size_t gone) const { return m_gone[gone].twin; }
    /// The first of those that share a mark with it and were left over.
    std::vector<std::size_t> candidatesFor(std::size_t gone, std::size_t most);

private:
    struct Entry
    {
        MarkedFile file;
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
    /// What a file shows besides its marks; empty when it has nothing of the kind.
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
    std::unordered_map<int, std::vector<std::size_t>> m_leftOver; ///< found files of a mark
};
} // namespace qo::host
