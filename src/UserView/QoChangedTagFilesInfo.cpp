#include "UserView/QoChangedTagFilesInfo.h"

#include "Logical/LTAlbum.h"
#include "Logical/LTArtist.h"
#include "Logical/LTGenre.h"
#include "UserView/UVViewHelper.h"
#include "common/ListT.h"

namespace
{
int byFileAddress(const boost::shared_ptr<CHDMusicFile>& a,
                  const boost::shared_ptr<CHDMusicFile>& b)
{
    return CListT<const CHDMusicFile>::comparePointers(a.get(), b.get());
}
} // namespace

CQoChangedTagFilesInfo::CQoChangedTagFilesInfo() : CQoCollSubset(false), m_musicFiles(byFileAddress)
{
}

CQoChangedTagFilesInfo::~CQoChangedTagFilesInfo() = default;

void CQoChangedTagFilesInfo::clear()
{
    m_musicFiles.clear();
    CQoCollSubset::clear();
}

void CQoChangedTagFilesInfo::refresh()
{
    CQoCollSubset::clear();
    for (const MusicFile& file : m_musicFiles)
        addRemoveFile(file, true);
}

void CQoChangedTagFilesInfo::addMusicFile(const MusicFile& file)
{
    if (m_musicFiles.addUnique(file) != -1)
        addRemoveFile(file, true);
}

void CQoChangedTagFilesInfo::removeMusicFile(const MusicFile& file)
{
    MusicFile kept; // as file may be a reference to the handle in the list
    kept = file;
    if (m_musicFiles.remove(kept))
        addRemoveFile(kept, false);
}

void CQoChangedTagFilesInfo::removeMusicFiles(const MusicFiles& files)
{
    for (const MusicFile& file : files)
        removeMusicFile(file);
}

void CQoChangedTagFilesInfo::setMusicFiles(const MusicFiles& files)
{
    m_musicFiles.clear();
    for (const MusicFile& file : files)
        m_musicFiles.addUnique(file);
    refresh();
}

int CQoChangedTagFilesInfo::getMusicFileCount() const
{
    return m_musicFiles.GetSize();
}

void CQoChangedTagFilesInfo::getMusicFiles(MusicFiles& files) const
{
    files.Copy(m_musicFiles);
}

bool CQoChangedTagFilesInfo::hasFile(const MusicFile& file) const
{
    return m_musicFiles.find(file) != -1;
}

bool CQoChangedTagFilesInfo::hasInfo(const CUVViewItem* item,
                                     const CQoUtils::ParentItemsInfo& parents) const
{
    if (!item)
        return false;
    if (item->isFile())
        return CQoCollSubset::hasFile(boost::dynamic_pointer_cast<CHDFile>(item->getLinkObj()));
    int own = 0;
    int foreign = 0;
    CUVViewHelper::getFileCount(*item, parents, *this, own, foreign);
    return own + foreign > 0;
}
