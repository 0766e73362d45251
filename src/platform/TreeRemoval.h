#pragma once

#include "platform/FileSystem.h"

#include <vector>

namespace qo
{
/// What removeTree() had to leave, and why.
struct TreeRemovalFailure
{
    CString path;
    bool isFolder = false;
    int error = 0; ///< EBUSY for a kept folder and for what is mounted in the tree
};

/// Removes a folder with all it holds. Neither the folder's own name nor any below it is followed
/// when it is a link, not even when somebody puts a link there meanwhile: a link is removed itself.
/// A file that stays keeps its folder as it is from there on; the folders beside it go all the
/// same. Folders that are among the kept, by device and inode, and whatever another file system is
/// mounted on, stay with all they hold.
///
/// 0 when all is gone, ENOTDIR when the path is no folder or a link to one, else the error of the
/// last failure. Safe from any thread.
QO_API int removeTree(const CString& folder,
                      const std::vector<FileInfo>& kept,
                      std::vector<TreeRemovalFailure>& failures);
} // namespace qo
