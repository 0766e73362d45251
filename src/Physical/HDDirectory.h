#pragma once

#include "Physical/HDObject.h"
#include "common/CollPath.h"
#include "common/PtrListT.h"

/// A directory of the physical tree. It holds its sub-directories, sorted by short name, and its
/// files, sorted by path; names and paths are compared without regard to case. Operations that
/// visit the whole tree do not recurse, so trees of any depth are safe; they cost as much as there
/// are directories.
///
///   C:\Music                    root: getPath() "C:\Music", getShortName() "Music", no parent
///     Ann                       getSubDirs()[0]
///       01 Dawn.mp3             getSubDirs()[0]->getFiles()[0]; its path is the whole path
class QO_API CHDDirectory final : public CHDObject
{
public:
    /// The null handle; it is also what the look-ups return when nothing is found.
    static const boost::shared_ptr<CHDDirectory> NullDir;

    /// Makes a directory; a root directory when parent is null. If the parent already has a
    /// directory of that name, the new one is returned without a parent.
    static boost::shared_ptr<CHDDirectory> createDir(const CQoCollPath& path,
                                                     const boost::shared_ptr<CHDDirectory>& parent);
    CHDDirectory(Key, const CQoCollPath& path);
    ~CHDDirectory() override;

    CString toString(bool full) const override;
    int getItemCount() const override;
    int getRecItemCount() const override;
    int getRecFileCount() const override;
    bool hasMusicFilesRec() const override;

    /// Links both, sorted by short name. False, with nothing changed, if the parent has a directory
    /// of that name already.
    static bool addSubDir(const boost::shared_ptr<CHDDirectory>& parent,
                          const boost::shared_ptr<CHDDirectory>& dir);
    /// Removes the directory from this one, and clears its parent in any case.
    void removeSubDir(const boost::shared_ptr<CHDDirectory>& dir);
    /// Links both, sorted by path. False, with nothing changed, if there is a file of that path
    /// already.
    static bool addFile(const boost::shared_ptr<CHDDirectory>& dir,
                        const boost::shared_ptr<CHDFile>& file);
    /// Removes exactly that file, never another one of the same path, and clears its parent.
    void removeFile(const boost::shared_ptr<CHDFile>& file);
    /// The same, but the file keeps its parent. False if it was not here.
    bool takeOutFile(const boost::shared_ptr<CHDFile>& file);

    /// The file of that path directly in this directory, by binary search; null if there is none.
    boost::shared_ptr<CHDFile> getFile(const CString& path) const;
    /// The sub-directory of that name directly in this one, by binary search; null if there is
    /// none.
    boost::shared_ptr<CHDDirectory> findSubDir(const CString& shortName) const;
    /// The sub-directory of that path directly in this one, by linear search; null if there is
    /// none.
    boost::shared_ptr<CHDDirectory> getSubDir(const CQoCollPath& path) const;
    bool hasSamePath(const CQoCollPath& path) const;
    /// True if there is no file here or below.
    bool isEmpty() const;
    bool isRootDir() const noexcept { return !m_parent; }

    /// Empties both lists. Parents of the removed objects are not cleared, so these still hold this
    /// directory; see CQoUtils::releaseHDDir.
    void clear();
    void clearHDObjects() { clear(); }
    /// Clears the links of all files here and below to logical objects, bottom up.
    void clearFilesLTObjectsRec();
    /// Sets all check marks here and below to "not checked".
    void resetCheckStateRec();

    /// Append the files: first those of this directory, then those of its sub-directories in order.
    void getAllMusicFiles(CPtrListT<CHDMusicFile>& files) const;
    void getAllFiles(CPtrListT<CHDFile>& files) const;

    /// Negative, 0 or positive, by the short name.
    static int cmpDirShortName(const CString& name, const boost::shared_ptr<CHDDirectory>& dir);
    /// The same by the last component of the path.
    static int cmpDirShortName(const CQoCollPath& path, const boost::shared_ptr<CHDDirectory>& dir);

    const CQoCollPath& getPath() const noexcept { return m_path; }
    /// The last component of the path, or the device for a path without components ("C:").
    const CString& getShortName() const noexcept { return m_shortName; }
    const boost::shared_ptr<CHDDirectory>& getParentDir() const noexcept { return m_parent; }
    const CPtrListT<CHDDirectory>& getSubDirs() const noexcept { return m_subDirs; }
    const CPtrListT<CHDFile>& getFiles() const noexcept { return m_files; }

private:
    CQoCollPath m_path;
    CString m_shortName;
    boost::shared_ptr<CHDDirectory> m_parent;
    CPtrListT<CHDDirectory> m_subDirs;
    CPtrListT<CHDFile> m_files;
};
