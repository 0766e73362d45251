#include "Logical/LTArtist.h"
#include "Logical/LTManager.h"
#include "Physical/HDDirectory.h"
#include "Physical/HDFile.h"
#include "QoColl/Collection/LinkedFiles.h"
#include "QoColl/Collection/QoCollection.h"
#include "QoColl/Collection/QoUtils.h"
#include "QoColl/Collection/subsets/QoCollSubset.h"
#include "QoColl/Db/Records/QoFileDbItem.h"

#include <optional>

namespace
{
using Type = CQoUtils::ECollectionType;

/// By the path of the root folder, so that a former root folder belongs to neither collection and
/// counts as own.
Type collectionOfRoot(const CQoUtils::Dir& root)
{
    // A root folder of both collections counts as own.
    const bool isForeign =
        root && !CQoCollection::m_ownCollection.isRootDirInCollection(root->getPath()) &&
        CQoCollection::m_foreignCollection.isRootDirInCollection(root->getPath());
    return isForeign ? CQoUtils::CT_Foreign : CQoUtils::CT_Own;
}

/// The collection of the files that are added one after the other.
class CollectionOfFiles
{
public:
    /// Adds a file; false when further files cannot change the answer.
    bool add(const CQoUtils::File& file)
    {
        // Most files lie in the directory of the one before.
        const CHDDirectory* const dir = file->getParentDir().get();
        if (m_type && dir == m_lastDir)
            return true;
        m_lastDir = dir;
        const Type type = collectionOfRoot(CQoUtils::getRootDir(file->getParentDir()));
        m_type = !m_type || *m_type == type ? type : CQoUtils::CT_Both;
        return *m_type != CQoUtils::CT_Both;
    }
    Type answer() const { return m_type.value_or(CQoUtils::CT_Own); }

private:
    std::optional<Type> m_type;
    const CHDDirectory* m_lastDir = nullptr;
};
} // namespace

CQoUtils::CQoCollectionMap CQoUtils::m_collectionMap;

/// A physical object belongs to the collection of its root folder, a logical one to those of its
/// files.
Type CQoUtils::getCollection(const CheckObject& object)
{
    if (!object)
        return CT_Own;
    switch (object->getObjectType())
    {
    case CQoCheckObject::OT_Physical:
        return collectionOfRoot(getRootDir(boost::dynamic_pointer_cast<CHDObject>(object)));
    case CQoCheckObject::OT_Logical:
    {
        CollectionOfFiles collection;
        qo::visitLinkedFiles(object, [&](const File& file) { return collection.add(file); });
        return collection.answer();
    }
    case CQoCheckObject::OT_InplaceConverted:
        return CT_InplaceConverted;
    case CQoCheckObject::OT_SearchResult:
        return CT_SearchResults;
    case CQoCheckObject::OT_Source:
        break;
    }
    return CT_Own;
}

Type CQoUtils::getCollection(const Files& files)
{
    CollectionOfFiles collection;
    for (const File& file : files)
    {
        if (!collection.add(file))
            break;
    }
    return collection.answer();
}

bool CQoUtils::collTypesMatch(Type a, Type b)
{
    return a == CT_Both || b == CT_Both || a == b;
}

/// Asks for the collection only if that matters, since a logical object may have many files.
bool CQoUtils::matchesCollection(const CheckObject& object, Type type)
{
    return type == CT_Both || collTypesMatch(getCollection(object), type);
}

CQoUtils::File CQoUtils::searchFileInAllCollections(const CString& velmoraId)
{
    File file = CQoCollection::m_ownCollection.getFileByVelmoraID(velmoraId);
    return file ? file : CQoCollection::m_foreignCollection.getFileByVelmoraID(velmoraId);
}

bool CQoUtils::isFileVisible(const File& file, int mask)
{
    using Group = int (*)(const File&);
    constexpr Group groups[] = {getFileAudioVideoType,
                                getFileVelmoraMyMusicType,
                                getFileIsMusicType,
                                getFileReviewedType,
                                getFileImportedType,
                                getFilePurchasedType};
    for (const Group group : groups)
    {
        if (group(file) & mask)
            return true;
    }
    return false;
}

bool CQoUtils::existVisibleFiles(const Files& files, int mask)
{
    for (const File& file : files)
    {
        if (isFileVisible(file, mask))
            return true;
    }
    return false;
}

bool CQoUtils::isObjectVisible(const CheckObject& object, const ShowFilterInfo& filter)
{
    if (filter.m_showTypes != ShowFilterInfo::showAll)
    {
        // The visit reaches its end only if all files are hidden, or if there are none.
        const auto isHidden = [&](const File& file)
        { return !isFileVisible(file, filter.m_showTypes); };
        if (qo::visitLinkedFiles(object, isHidden))
            return false;
    }
    switch (getCollection(object))
    {
    case CT_Own:
        return filter.m_showOwn;
    case CT_Foreign:
        return filter.m_showForeign;
    case CT_Both:
        return filter.m_showOwn || filter.m_showForeign;
    default:
        return false;
    }
}

bool CQoUtils::existSimilarFileInForeignCollection(const File& file)
{
    if (!file || file->getDbItem()->artist.IsEmpty() || file->getDbItem()->title.IsEmpty())
        return false;
    const Artist artist = CLTManager::findLTArtist(file->getDbItem()->artist);
    if (!artist)
        return false;
    int inOwn = 0;
    int inForeign = 0;
    CQoCollSubset::getCrtSubset().getArtistFileCount(artist, inOwn, inForeign);
    if (inOwn + inForeign == 0)
        return false;
    // The title is compared first: it is cheaper and excludes most files.
    const auto isNoSuchFile = [&](const File& other)
    {
        return other->getFileType() != CHDFile::FT_Music || !isSimilarFile(file, other) ||
               getCollection(other) != CT_Foreign;
    };
    return !qo::visitLinkedFiles(artist, isNoSuchFile);
}
