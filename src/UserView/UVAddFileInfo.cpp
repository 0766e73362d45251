#include "UserView/UVAddFileInfo.h"

#include "Logical/LTAlbum.h"
#include "Logical/LTArtist.h"
#include "Logical/LTGenre.h"
#include "Physical/HDFile.h"
#include "QoColl/Collection/LinkedFiles.h"
#include "UserView/UVViewItem.h"

namespace qo
{
void FileInView::reset(const CQoUtils::File& file)
{
    m_file = file;
    m_genre = boost::static_pointer_cast<CLTGenre>(file->getLTAssoc(CLTObjectType::Genre));
    m_artist = boost::static_pointer_cast<CLTArtist>(file->getLTAssoc(CLTObjectType::Artist));
    m_album = boost::static_pointer_cast<CLTAlbum>(file->getLTAssoc(CLTObjectType::Album));
}

bool FileInView::belongsTo(const CQoUtils::ParentItemsInfo& parents) const
{
    return qo::belongsTo(*m_file, parents);
}
} // namespace qo

void AddFileInfo::reset(const CQoUtils::File& file)
{
    reset();
    FileInView::reset(file);
}

void RemoveFileInfo::reset()
{
    cleanup();
    static_cast<qo::FileInView&>(*this) = {};
}

void RemoveFileInfo::reset(const CQoUtils::File& file)
{
    reset();
    FileInView::reset(file);
}
