#include "cli/rules/PlanSelection.h"

#include "core/base/HostError.h"

#include <QoKernel/Physical.h>

#include <optional>
#include <unordered_map>
#include <unordered_set>

namespace qo::cli
{
namespace
{
using Records = std::unordered_set<const QoFileDbItem*>;

/// What a name is looked up by, without regard to case.
std::u16string keyOf(CString name)
{
    return std::u16string(name.MakeLower().view());
}

/// The music of one folder, by what the pictures and texts beside it may belong to. A key of it
/// tells whether all music there was chosen.
class FolderMusic
{
public:
    FolderMusic(const CHDDirectory& folder, const Records& chosen)
    {
        for (const auto& file : folder.getFiles())
        {
            if (file->getFileType() != CHDFile::FT_Music)
                continue;
            const bool isChosen = chosen.contains(file->getDbItem().get());
            m_byTitle.try_emplace(keyOf(fileTitleOf(file->getPath())), isChosen);
            for (const CString& album : {file->getDbItem()->album, CString()})
            {
                bool& isWhole = m_byAlbum.try_emplace(keyOf(album), true).first->second;
                isWhole = isWhole && isChosen;
            }
        }
    }

    bool holds(const CHDFile& file) const
    {
        const auto namesake = m_byTitle.find(keyOf(fileTitleOf(file.getPath())));
        if (namesake != m_byTitle.end())
            return namesake->second;
        const auto album = m_byAlbum.find(keyOf(file.getDbItem()->album));
        return album != m_byAlbum.end() && album->second;
    }

private:
    std::unordered_map<std::u16string, bool> m_byTitle;
    std::unordered_map<std::u16string, bool> m_byAlbum; ///< under "" all of the folder
};

/// The pictures and texts beside the chosen music that belong to nothing else.
void addCompanions(Records& chosen, const QoFileDbItemArray& all)
{
    const Records music = chosen;
    std::unordered_map<const CHDDirectory*, FolderMusic> folders;
    for (const QoFileDbItemPtr& item : all)
    {
        const auto file = CQoCollection::m_ownCollection.getFileByPath(item->path);
        const CHDDirectory* const folder = file ? file->getParentDir().get() : nullptr;
        if (folder && file->getFileType() != CHDFile::FT_Music &&
            folders.try_emplace(folder, *folder, music).first->second.holds(*file))
            chosen.insert(item.get());
    }
}
} // namespace

QoFileDbItemArray PlanSelection::records() const
{
    QoFileDbItemArray all;
    CQoCollection::m_ownCollection.copyFiles(all);
    host::Query query(choice.request);
    Records chosen;
    for (const QoFileDbItemPtr& item : all)
    {
        if (query.fits(*item))
            chosen.insert(item.get());
    }
    // What a path names is meant as it is.
    if (!query.isPathsOnly())
        addCompanions(chosen, all);
    std::optional<host::PathSelection> below;
    if (!root.empty() && !(below = host::PathSelection::of(root)))
        throw host::HostError(host::ExitCode::notFound, root + " is not in the collection");
    QoFileDbItemArray records;
    for (const QoFileDbItemPtr& item : all)
    {
        if (chosen.contains(item.get()) && (!below || below->holds(item->path)))
            records.Add(item);
    }
    if (records.IsEmpty() && (choice.isSet() || below))
        complainOfNothing(choice);
    return records;
}
} // namespace qo::cli
