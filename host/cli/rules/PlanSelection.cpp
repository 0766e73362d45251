#include "cli/rules/PlanSelection.h"

#include "cli/files/FoundFiles.h"
#include "core/base/HostError.h"

#include <QoKernel/Physical.h>

#include <unordered_map>
#include <unordered_set>

namespace qo::cli
{
namespace
{
using Records = std::unordered_set<const QoFileDbItem*>;

void addBelow(const std::string& typed, Records& records)
{
    const FoundFiles found(typed);
    for (const QoFileDbItemPtr& item : found.files())
        records.insert(item.get());
}

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

/// The files of the chosen tracks, and the pictures and texts beside them that belong to nothing
/// else.
Records chosenRecords(const MusicFilter& filter, const QoFileDbItemArray& all)
{
    Records music;
    for (const CLTTrack* track : filter.tracks())
    {
        for (const auto& file : track->getMusicFiles())
            music.insert(file->getDbItem().get());
    }
    Records records = music;
    std::unordered_map<const CHDDirectory*, FolderMusic> folders;
    for (const QoFileDbItemPtr& item : all)
    {
        const auto file = CQoCollection::m_ownCollection.getFileByPath(item->path);
        const CHDDirectory* const folder = file ? file->getParentDir().get() : nullptr;
        if (folder && file->getFileType() != CHDFile::FT_Music &&
            folders.try_emplace(folder, *folder, music).first->second.holds(*file))
            records.insert(item.get());
    }
    return records;
}
} // namespace

QoFileDbItemArray PlanSelection::records() const
{
    const QoFileDbItemArray all = FoundFiles(std::string()).files();
    std::vector<Records> conditions;
    if (!root.empty())
        addBelow(root, conditions.emplace_back());
    if (!paths.empty())
        conditions.emplace_back();
    for (const std::string& path : paths)
        addBelow(path, conditions.back());
    if (filter.isSet())
        conditions.push_back(chosenRecords(filter, all));
    QoFileDbItemArray chosen;
    for (const QoFileDbItemPtr& item : all)
    {
        bool isMeant = true;
        for (const Records& condition : conditions)
            isMeant = isMeant && condition.contains(item.get());
        if (isMeant)
            chosen.Add(item);
    }
    if (chosen.IsEmpty() && !conditions.empty())
        throw host::HostError(host::ExitCode::notFound,
                              "no file of the collection is meant by all of that together");
    return chosen;
}
} // namespace qo::cli
