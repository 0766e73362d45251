#include "QoColl/Collection/subsets/QoCheckHelper.h"

#include "Analyze/BottomUp.h"
#include "Logical/LTObject.h"
#include "Physical/HDMusicFile.h"
#include "QoColl/Collection/LinkedFiles.h"
#include "QoColl/Collection/QoCollection.h"

#include <algorithm>
#include <unordered_set>
#include <vector>

namespace
{
using State = CQoCheckHelper::ECheckState;
using Dir = CQoCheckHelper::Dir;
using File = CQoUtils::File;
using LTObjects = CQoCheckHelper::LTObjects;
using CollType = CQoUtils::ECollectionType;

/// Adds logical objects to a list, each once. The set makes that independent of the length of the
/// list, which holds all tracks when everything is checked.
class AssocList
{
public:
    explicit AssocList(LTObjects& list) : m_list(list)
    {
        for (const auto& object : list)
            m_known.insert(object.get());
    }
    void add(const boost::shared_ptr<CLTObject>& object)
    {
        if (object && m_known.insert(object.get()).second)
            m_list.add(object);
    }
    void addAssocsOf(const CHDFile& file)
    {
        for (int i = 0; i < typeCount; ++i)
        {
            const boost::shared_ptr<CLTObject> assoc = file.getLTAssoc(CLTObjectType::getType(i));
            // Neighbouring files mostly share their album, artist and genre.
            if (assoc.get() == m_last[i])
                continue;
            m_last[i] = assoc.get();
            add(assoc);
        }
    }

private:
    static constexpr int typeCount = 6;

    LTObjects& m_list;
    std::unordered_set<const CLTObject*> m_known;
    const CLTObject* m_last[typeCount] = {}; ///< per type
};

/// Whether the file has left its collection; it is linked to its logical objects until it is
/// released.
bool hasLeft(const CHDFile& file)
{
    return file.getCheckState() == CQoCheckState::CS_None;
}

State orNotChecked(State state)
{
    return state == CQoCheckState::CS_None ? CQoCheckState::CS_NotChecked : state;
}

/// The combined state of a list; of an empty one that which it starts with.
template <class X>
State combine(const CPtrListT<X>& objects, State state)
{
    for (const auto& object : objects)
    {
        if (state == CQoCheckState::CS_Mixed)
            break;
        state = CQoCheckHelper::getCombinedCheckState(state, object->getCheckState());
    }
    return state;
}

/// Visits the files below the directory, those of sub-directories first, until a visit returns
/// false; true if none did.
template <class Visit>
bool visitFilesUp(const Dir& top, Visit visit)
{
    return qo::walkBottomUp(top,
                            nullptr,
                            [&](const Dir& dir)
                            {
                                for (const File& file : dir->getFiles())
                                {
                                    if (!visit(file))
                                        return false;
                                }
                                return true;
                            });
}

void setStateOfAll(const Dir& top, State state, AssocList* assocs)
{
    qo::walkBottomUp(top,
                     nullptr,
                     [&](const Dir& dir)
                     {
                         for (const File& file : dir->getFiles())
                         {
                             file->setCheckState(state);
                             if (assocs)
                                 assocs->addAssocsOf(*file);
                         }
                         dir->setCheckState(state);
                         return true;
                     });
}

/// Calls visit for the collections that the type names until it returns false.
template <class Visit>
void forCollections(CollType type, Visit visit)
{
    const bool goesOn =
        !CQoUtils::collTypesMatch(type, CQoUtils::CT_Own) || visit(CQoCollection::m_ownCollection);
    if (goesOn && CQoUtils::collTypesMatch(type, CQoUtils::CT_Foreign))
        visit(CQoCollection::m_foreignCollection);
}
} // namespace

State CQoCheckHelper::getCombinedCheckState(State a, State b)
{
    if (a == CQoCheckState::CS_None || a == b)
        return b;
    return b == CQoCheckState::CS_None ? a : CQoCheckState::CS_Mixed;
}

void CQoCheckHelper::setCheckState(const CPtrListT<CQoCheckObject>& objects, State state)
{
    LTObjects touched;
    AssocList assocs(touched);
    CPtrListT<CQoCheckObject> physical;
    const auto setFile = [&](const File& file)
    {
        if (hasLeft(*file))
            return true;
        file->setCheckState(state);
        assocs.addAssocsOf(*file);
        physical.add(file);
        return true;
    };
    for (const auto& object : objects)
    {
        if (const auto dir = boost::dynamic_pointer_cast<CHDDirectory>(object))
        {
            setStateOfAll(dir, state, &assocs);
            physical.add(dir);
            continue;
        }
        // A logical object without files gets its state as well.
        object->setCheckState(state);
        qo::visitLinkedFiles(object, setFile);
    }
    updateParentDirsCheckState(physical, touched);
    updateLTAssocsCheckState(touched);
}

void CQoCheckHelper::updateLTCheckState(const LTObject& object)
{
    if (!object)
        return;
    State state = CQoCheckState::CS_None;
    qo::visitLinkedFiles(object,
                         [&state](const File& file)
                         {
                             state = getCombinedCheckState(state, file->getCheckState());
                             return state != CQoCheckState::CS_Mixed;
                         });
    object->setCheckState(orNotChecked(state));
}

void CQoCheckHelper::updateLTAssocsCheckState(const LTObjects& objects)
{
    for (const LTObject& object : objects)
        updateLTCheckState(object);
}

void CQoCheckHelper::getAssocLTObjects(const CheckObject& object, LTObjects* assocs, int types)
{
    const auto* const physical = dynamic_cast<const CHDObject*>(object.get());
    if (!physical || !assocs)
        return;
    for (int i = 0; i < CLTObjectType::getTypesCount(); ++i)
    {
        const CLTObjectType::EType type = CLTObjectType::getType(i);
        const LTObject assoc = (types & type) != 0 ? physical->getLTAssoc(type) : LTObject();
        if (assoc)
            assocs->addUnique(assoc);
    }
}

void CQoCheckHelper::setSubItemsCheckState(const Dir& dir, State state, LTObjects& assocs)
{
    AssocList list(assocs);
    setStateOfAll(dir, state, &list);
}

void CQoCheckHelper::setSubItemsCheckState(const LTObject& object, State state, LTObjects& assocs)
{
    AssocList list(assocs);
    list.add(object);
    object->setCheckState(state);
    qo::visitLinkedFiles(object,
                         [&](const File& file)
                         {
                             if (hasLeft(*file))
                                 return true;
                             file->setCheckState(state);
                             list.addAssocsOf(*file);
                             return true;
                         });
}

void CQoCheckHelper::updateDirCheckStateFromSubItems(const Dir& dir, LTObjects& assocs)
{
    const State state = combine(dir->getSubDirs(), CQoCheckState::CS_None);
    dir->setCheckState(orNotChecked(combine(dir->getFiles(), state)));
    getAssocLTObjects(dir, &assocs);
}

void CQoCheckHelper::updateDirAndParentsCheckState(const Dir& dir, LTObjects& assocs)
{
    for (Dir next = dir; next; next = next->getParentDir())
        updateDirCheckStateFromSubItems(next, assocs);
}

CQoCheckHelper::Dir CQoCheckHelper::getParentDir(const CheckObject& object)
{
    if (const auto file = boost::dynamic_pointer_cast<CHDFile>(object))
        return file->getParentDir();
    const auto dir = boost::dynamic_pointer_cast<CHDDirectory>(object);
    return dir ? dir->getParentDir() : CHDDirectory::NullDir;
}

void CQoCheckHelper::updateParentDirsCheckState(const CPtrListT<CQoCheckObject>& objects,
                                                LTObjects& assocs)
{
    std::unordered_set<const CHDDirectory*> known;
    CPtrListT<CHDDirectory> dirs;
    for (const auto& object : objects)
    {
        Dir dir = getParentDir(object);
        for (; dir && known.insert(dir.get()).second; dir = dir->getParentDir())
            dirs.add(dir);
    }
    updateDirsCheckState(dirs, assocs);
}

void CQoCheckHelper::updateDirsCheckState(const CPtrListT<CHDDirectory>& dirs, LTObjects& assocs)
{
    std::vector<Dir> upwards(dirs.begin(), dirs.end());
    const auto isDeeper = [](const Dir& a, const Dir& b)
    { return a->getPath().getCount() > b->getPath().getCount(); };
    std::stable_sort(upwards.begin(), upwards.end(), isDeeper);
    for (const Dir& dir : upwards)
        updateDirCheckStateFromSubItems(dir, assocs);
}

void CQoCheckHelper::setObjectsCheckState(const Dir& dir, State state)
{
    setStateOfAll(dir, state, nullptr);
}

void CQoCheckHelper::setObjectsCheckState(const CQoCollection& collection, State state)
{
    for (const Dir& root : collection.getRootDirs())
        setObjectsCheckState(root, state);
}

void CQoCheckHelper::getCheckedFilesInfo(const Dir& dir,
                                         int& fileCount,
                                         int& musicCount,
                                         std::int64_t* size)
{
    visitFilesUp(dir,
                 [&](const File& file)
                 {
                     if (!file->isChecked())
                         return true;
                     ++fileCount;
                     musicCount += file->getFileType() == CHDFile::FT_Music;
                     if (size)
                         *size += CQoUtils::getFileSize(file);
                     return true;
                 });
}

void CQoCheckHelper::getCheckedFilesInfo(const CQoCollection& collection,
                                         int& fileCount,
                                         int& musicCount,
                                         std::int64_t* size)
{
    for (const Dir& root : collection.getRootDirs())
        getCheckedFilesInfo(root, fileCount, musicCount, size);
}

void CQoCheckHelper::getCheckedFilesInfo(Type type,
                                         int& fileCount,
                                         int& musicCount,
                                         std::int64_t* size)
{
    forCollections(type,
                   [&](const CQoCollection& collection)
                   {
                       getCheckedFilesInfo(collection, fileCount, musicCount, size);
                       return true;
                   });
}

int CQoCheckHelper::getCheckedFiles(
    const Dir& dir, bool musicOnly, MusicFiles* musicList, Files* fileList, bool stopAtFirst)
{
    int count = 0;
    visitFilesUp(dir,
                 [&](const File& file)
                 {
                     const bool isMusic = file->getFileType() == CHDFile::FT_Music;
                     if (!file->isChecked() || (musicOnly && !isMusic))
                         return true;
                     ++count;
                     if (musicOnly && musicList)
                         musicList->add(boost::static_pointer_cast<CHDMusicFile>(file));
                     else if (!musicOnly && fileList)
                         fileList->add(file);
                     return !stopAtFirst;
                 });
    return count;
}

int CQoCheckHelper::getCheckedFiles(const CQoCollection& collection,
                                    bool musicOnly,
                                    MusicFiles* musicList,
                                    Files* fileList,
                                    bool stopAtFirst)
{
    int count = 0;
    for (const Dir& root : collection.getRootDirs())
    {
        count += getCheckedFiles(root, musicOnly, musicList, fileList, stopAtFirst);
        if (stopAtFirst && count > 0)
            break;
    }
    return count;
}

int CQoCheckHelper::getCheckedFiles(
    Type type, bool musicOnly, MusicFiles* musicList, Files* fileList, bool stopAtFirst)
{
    int count = 0;
    forCollections(type,
                   [&](const CQoCollection& collection)
                   {
                       count +=
                           getCheckedFiles(collection, musicOnly, musicList, fileList, stopAtFirst);
                       return !stopAtFirst || count == 0;
                   });
    return count;
}

int CQoCheckHelper::getCheckedMusicFiles(Type type, MusicFiles& files)
{
    return getCheckedFiles(type, true, &files, nullptr, false);
}

int CQoCheckHelper::getCheckedMusicFilesCount(Type type)
{
    return getCheckedFiles(type, true, nullptr, nullptr, false);
}

bool CQoCheckHelper::hasCheckedMusicFiles(Type type)
{
    return getCheckedFiles(type, true, nullptr, nullptr, true) > 0;
}

int CQoCheckHelper::getCheckedHDFiles(Type type, Files& files)
{
    return getCheckedFiles(type, false, nullptr, &files, false);
}

int CQoCheckHelper::getCheckedHDFilesCount(Type type)
{
    return getCheckedFiles(type, false, nullptr, nullptr, false);
}

bool CQoCheckHelper::hasCheckedHDFiles(Type type)
{
    return getCheckedFiles(type, false, nullptr, nullptr, true) > 0;
}
