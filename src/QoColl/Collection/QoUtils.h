#pragma once

#include "Physical/Forward.h"
#include "common/PtrListT.h"
#include "common/types/String.h"

class CQoCollPath;
class CStringArray;

/// Questions about files, paths and the objects of the collections. Free of state.
class QO_API CQoUtils
{
public:
    /// Which collection an object belongs to; also a query for one.
    enum ECollectionType : int
    {
        CT_Own = 0, ///< also the answer when nothing decides
        CT_Foreign = 1,
        CT_Both = 2, ///< any of the two in a query, some of each in an answer
        CT_InplaceConverted = 3,
        CT_SearchResults = 4
    };

    /// By an extension without dot, without regard to case. Music is audio or video.
    static bool isAudioExt(const CString& ext);
    static bool isVideoExt(const CString& ext);
    static bool isMusicExt(const CString& ext);
    static bool isMusicFilePath(const CString& path);

    /// The path under which the system can reach the file: only for drive and network paths. False
    /// leaves real alone; the other form is then empty.
    static bool getRealPath(const CQoCollPath& path, CString& real);
    static CString getRealPath(const CQoCollPath& path);
    /// The same for a path in string form, which needs no parsing.
    static CString getRealPath(const CString& path);
    /// Negative, 0 or positive, without regard to case. The order of records and files.
    static int comparePaths(const CString& a, const CString& b);
    /// Appends to added what only the first list has and to removed what only the second has, each
    /// sorted; so callers who ask what is new pass the new list first.
    static void diffPaths(const CStringArray& oldDirs,
                          const CStringArray& newDirs,
                          CStringArray& added,
                          CStringArray& removed);

    /// The directory itself, or the one that holds the file; null for a file outside a tree.
    static boost::shared_ptr<CHDDirectory> getDir(const boost::shared_ptr<CHDObject>& object);
    /// The highest directory above; null for a file outside a tree.
    static boost::shared_ptr<CHDDirectory> getRootDir(const boost::shared_ptr<CHDObject>& object);
    static boost::shared_ptr<CHDDirectory> getRootDir(const boost::shared_ptr<CHDDirectory>& dir);

    /// Take the objects out of the tree and so end the cycle of handles between parent and child:
    /// the one way to free a tree. An object that somebody else holds lives on without its parent.
    /// Costs are linear and no recursion follows the depth of the tree.
    static void releaseHDFile(const boost::shared_ptr<CHDFile>& file);
    static void releaseHDDir(const boost::shared_ptr<CHDDirectory>& dir);
    /// The list is empty afterwards.
    static void releaseHDDirs(CPtrListT<CHDDirectory>& dirs);
};
