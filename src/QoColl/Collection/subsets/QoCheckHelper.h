#pragma once

#include "Physical/QoCheckState.h"
#include "QoColl/Collection/QoUtils.h"

class CQoCollection;

/// Keeps the check marks of both trees in step. The marks of files are what counts; those of
/// directories and logical objects follow from them. setCheckState() sets a mark, in these steps:
///
///   1. setSubItemsCheckState() gives the state to the files and collects the artists, albums,
///      genres, tracks, lyrics and pictures that they belong to;
///   2. updateParentDirsCheckState() corrects the directories above;
///   3. updateLTAssocsCheckState() corrects what was collected.
///
/// Handles must not be null unless a comment says so. No locks: the host keeps calls apart.
class QO_API CQoCheckHelper
{
public:
    using ECheckState = CQoCheckState::ECheckState;
    using CheckObject = CQoUtils::CheckObject;
    using Dir = CQoUtils::Dir;
    using Files = CQoUtils::Files;
    using LTObject = boost::shared_ptr<CLTObject>;
    using LTObjects = CPtrListT<CLTObject>;
    using MusicFiles = CPtrListT<CHDMusicFile>;
    using Type = CQoUtils::ECollectionType;

    /// The state that stands for both; CS_None gives way to the other one.
    static ECheckState getCombinedCheckState(ECheckState a, ECheckState b);

    /// The whole way for objects of any kind: gives them and what is below them the state, and
    /// corrects everything that this touches.
    static void setCheckState(const CPtrListT<CQoCheckObject>& objects, ECheckState state);

    /// From the files that are linked to it; "not checked" without files. Null is ignored.
    static void updateLTCheckState(const LTObject& object);
    static void updateLTAssocsCheckState(const LTObjects& objects);
    /// Appends the logical objects of a physical one to assocs, unless they are there or assocs is
    /// null. types is a mask of CLTObjectType::EType.
    static void
    getAssocLTObjects(const CheckObject& object, LTObjects* assocs, int types = allTypes);

    /// Sets the state of the directory and of everything below it. assocs receives the logical
    /// objects of the files.
    static void setSubItemsCheckState(const Dir& dir, ECheckState state, LTObjects& assocs);
    /// Sets the state of the object and of the files that are linked to it. assocs receives the
    /// object and all others of the files. The directories of the files must be updated by the
    /// caller.
    static void setSubItemsCheckState(const LTObject& object, ECheckState state, LTObjects& assocs);
    /// Sets the directory's state from what is directly in it; "not checked" if that is nothing.
    static void updateDirCheckStateFromSubItems(const Dir& dir, LTObjects& assocs);
    /// The same for the directory and, after it, for each one above.
    static void updateDirAndParentsCheckState(const Dir& dir, LTObjects& assocs);
    /// The directory that a file or directory lies in; null for a root directory and for objects
    /// that are not physical.
    static Dir getParentDir(const CheckObject& object);
    /// The same for the directories of all objects; each directory is updated once.
    static void updateParentDirsCheckState(const CPtrListT<CQoCheckObject>& objects,
                                           LTObjects& assocs);
    /// The same for these directories, a directory before the one that it lies in.
    static void updateDirsCheckState(const CPtrListT<CHDDirectory>& dirs, LTObjects& assocs);
    /// Sets the state of the directory and everything below it, but of no logical object.
    static void setObjectsCheckState(const Dir& dir, ECheckState state);
    static void setObjectsCheckState(const CQoCollection& collection, ECheckState state);

    // Checked files; a directory never counts itself. Of both collections the own comes first.

    /// Adds the numbers of files and of music files among them, and their bytes if size is not
    /// null. Bytes are asked of the disk: a file that cannot be reached counts as 0 bytes, with a
    /// log line.
    static void
    getCheckedFilesInfo(const Dir& dir, int& fileCount, int& musicCount, std::int64_t* size);
    static void getCheckedFilesInfo(const CQoCollection& collection,
                                    int& fileCount,
                                    int& musicCount,
                                    std::int64_t* size);
    static void getCheckedFilesInfo(Type type, int& fileCount, int& musicCount, std::int64_t* size);

    /// The number of checked files, or of checked music files with musicOnly. They are appended to
    /// musicList with musicOnly, else to fileList; either may be null. With stopAtFirst the search
    /// ends at the first one.
    static int getCheckedFiles(
        const Dir& dir, bool musicOnly, MusicFiles* musicList, Files* fileList, bool stopAtFirst);
    static int getCheckedFiles(const CQoCollection& collection,
                               bool musicOnly,
                               MusicFiles* musicList,
                               Files* fileList,
                               bool stopAtFirst);
    static int getCheckedFiles(
        Type type, bool musicOnly, MusicFiles* musicList, Files* fileList, bool stopAtFirst);

    static int getCheckedMusicFiles(Type type, MusicFiles& files);
    static int getCheckedMusicFilesCount(Type type);
    static bool hasCheckedMusicFiles(Type type);
    static int getCheckedHDFiles(Type type, Files& files);
    static int getCheckedHDFilesCount(Type type);
    static bool hasCheckedHDFiles(Type type);

private:
    static constexpr int allTypes = 0x3f;
};
