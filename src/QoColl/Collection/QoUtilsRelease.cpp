#include "Logical/LTManager.h"
#include "Physical/HDDirectory.h"
#include "Physical/HDMusicFile.h"
#include "Physical/HDPictureFile.h"
#include "Physical/HDTextFile.h"
#include "QoColl/Collection/QoUtils.h"

#include <vector>

// Freeing trees. Parents and children hold each other, so each directory is emptied, bottom up, and
// the logical objects of its files are released.

namespace
{
void releaseLTObjects(const CQoUtils::File& file)
{
    switch (file->getFileType())
    {
    case CHDFile::FT_Music:
        return CLTManager::releaseMusicLTObjects(boost::static_pointer_cast<CHDMusicFile>(file));
    case CHDFile::FT_Picture:
        return CLTManager::releasePictureLTObjects(
            boost::static_pointer_cast<CHDPictureFile>(file));
    case CHDFile::FT_Text:
        return CLTManager::releaseLyricsLTObjects(boost::static_pointer_cast<CHDTextFile>(file));
    case CHDFile::FT_Other:
        return;
    }
}

/// The directory and everything below it, in such an order that, walked backwards, each directory
/// comes after everything below it and sub-directories come in order.
std::vector<CQoUtils::Dir> dirsDownFrom(const CQoUtils::Dir& dir)
{
    std::vector<CQoUtils::Dir> dirs;
    std::vector<CQoUtils::Dir> waiting{dir};
    while (!waiting.empty())
    {
        dirs.push_back(std::move(waiting.back()));
        waiting.pop_back();
        for (const auto& subDir : dirs.back()->getSubDirs())
            waiting.push_back(subDir);
    }
    return dirs;
}
} // namespace

void CQoUtils::releaseHDFile(const File& file)
{
    // Both are held until the end: the argument may be a reference to the directory's own handle,
    // and the file's handle to the directory may be the last one.
    const File kept = file;
    const Dir dir = kept->getParentDir();
    if (dir)
        dir->removeFile(kept);
    releaseLTObjects(kept);
}

void CQoUtils::releaseHDDir(const Dir& dir)
{
    for (std::vector<Dir> dirs = dirsDownFrom(dir); !dirs.empty(); dirs.pop_back())
    {
        CHDDirectory& current = *dirs.back();
        // Takes the first file of this list each time, whatever its path and parent say, so the
        // list gets shorter with every step.
        while (!current.getFiles().IsEmpty())
        {
            const File file = current.getFiles()[0];
            current.removeFile(file);
            releaseLTObjects(file);
        }
        while (!current.getSubDirs().IsEmpty())
            current.removeSubDir(Dir(current.getSubDirs()[current.getSubDirs().GetUpperBound()]));
    }
}

void CQoUtils::releaseHDDirs(CPtrListT<CHDDirectory>& dirs)
{
    for (const auto& dir : dirs)
        releaseHDDir(dir);
    dirs.clear();
}
