#pragma once

#include <QoKernel/Inside.h>
#include <QoKernel/Kernel.h>

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace qo::host
{
/// The folders that a plan takes files from and puts files into, as the disk has them. Each is
/// looked at once, when it is first asked for; what comes later is not seen. Paths in collection
/// form. Folders stay valid as long as this. Not for several threads at once.
class DiskFolders
{
public:
    struct Folder
    {
        CString path;
        Folder* parent = nullptr; ///< null for a base
        bool isThere = false;
        std::uint64_t device = 0; ///< of it, or of the nearest folder above that is there
        VolumeRules rules;        ///< for names in it
        /// A clause, when files may neither leave the folder nor come into it: it or one on the way
        /// from the base is a link or no folder, the trash or a folder of this program.
        std::string whyClosed;

    private:
        friend class DiskFolders;
        std::unordered_map<CString, std::unique_ptr<Folder>> m_children;
        std::unordered_map<CString, Folder*> m_below;              ///< by their paths from here
        std::unordered_map<CString, Folder*> m_targets;            ///< likewise, by what was wanted
        std::unordered_map<CString, std::vector<CString>> m_names; ///< on the disk, by their keys
        std::unordered_map<CString, CString> m_newFolders;         ///< likewise
        bool m_areNamesRead = false;
    };

    DiskFolders();

    /// A folder from which the paths of all others count; links are followed.
    Folder& base(const CString& path);
    /// The folder of exactly that path; "" for the base itself.
    Folder& below(Folder& base, const CString& relative);
    /// A file will be put into that folder. To be called for all files before the first target():
    /// so each folder gets one spelling.
    void want(const Folder& base, const CString& relative);
    /// The folder for new files: names that the place cannot hold are made to fit. Spellings that
    /// differ in case or in Unicode form alone are one folder, since the collection takes them for
    /// one: the one that the disk has, else the one that most files want, else the first.
    Folder& target(Folder& base, const CString& relative);

    /// The names in the folder that the collection takes for the same as this one. Where they
    /// cannot be read, none, and the folder is closed.
    const std::vector<CString>& namesLike(Folder& folder, const CString& name);
    /// Whether target() gave a folder in this one that has to be made and has such a name.
    static bool isNewFolder(const Folder& folder, const CString& name);

private:
    using Identity = std::pair<std::uint64_t, std::uint64_t>; ///< device and inode

    Folder& child(Folder& parent, const CString& name);
    Folder& fittingChild(Folder& parent, const CString& wanted);
    const CString& spellingOf(const Folder& parent, const CString& wanted);
    void addWish(const CString& folder, std::size_t files);
    void look(Folder& folder, const CString& name) const;
    void readNames(Folder& folder) const;

    struct Wish
    {
        CString name;
        std::size_t files = 0;
    };

    std::vector<Identity> m_ownFolders;
    std::unordered_map<CString, std::size_t> m_wanted; ///< files by path of the folder, as wanted
    std::vector<CString> m_wantedInOrder;
    /// The spellings of each folder by the key of its path; made of the above when first needed.
    std::unordered_map<CString, std::vector<Wish>> m_wishes;
    std::unordered_map<CString, std::unique_ptr<Folder>> m_bases;
};
} // namespace qo::host
