#pragma once

#include "Physical/HDObject.h"
#include "common/CollPath.h"
#include "common/PtrListT.h"

/// A directory of the physical tree. Names and paths are compared without regard to case. The
/// operations that go down the tree need no stack of their own per level, however deep it is.
class QO_API CHDDirectory final : public CHDObject
{
public:
    /// "No directory".
    static const boost::shared_ptr<CHDDirectory> NullDir;

    /// A directory without parent when parent is null. It is returned even if the parent has one
    /// of that name already, then unlinked.
    static boost::shared_ptr<CHDDirectory> createDir(const CQoCollPath& path,
                                                     const boost::shared_ptr<CHDDirectory>& parent);
    CHDDirectory(Key, const CQoCollPath& path);
    ~CHDDirectory() override;

    CString toString(bool full) const override;
    int getItemCount() const override;
    int getRecItemCount() const override;
    int getRecFileCount() const override;
    bool hasMusicFilesRec() const override;

    /// Links both ways, sorted by short name. Nothing happens, and the result is false, if a
    /// directory of that name is there.
    static bool addSubDir(const boost::shared_ptr<CHDDirectory>& parent,
                          const boost::shared_ptr<CHDDirectory>& dir);
    /// Clears the parent of the directory, even if it was not found here.
    void removeSubDir(const boost::shared_ptr<CHDDirectory>& dir);
    /// Links both ways, sorted by path. Nothing happens, and the result is false, if a file of that
    /// path is there.
    static bool addFile(const boost::shared_ptr<CHDDirectory>& dir,
                        const boost::shared_ptr<CHDFile>& file);
    /// Takes out that very file, never another one of the same path, and clears its parent.
    void removeFile(const boost::shared_ptr<CHDFile>& file);
    /// The same, but the file keeps its parent. Whether it was here.
    bool takeOutFile(const boost::shared_ptr<CHDFile>& file);

    /// Null if absent.
    boost::shared_ptr<CHDFile> getFile(const CString& path) const;
    /// The direct sub-directory of that name, by a binary search; null if absent.
    boost::shared_ptr<CHDDirectory> findSubDir(const CString& shortName) const;
    /// The direct sub-directory of that path, by a linear search; null if absent.
    boost::shared_ptr<CHDDirectory> getSubDir(const CQoCollPath& path) const;
    bool hasSamePath(const CQoCollPath& path) const;
    /// No file here or deeper.
    bool isEmpty() const;
    bool isRootDir() const noexcept { return !m_parent; }

    /// Empty both lists; what was in them keeps its parent.
    void clear();
    void clearHDObjects() { clear(); }
    /// Bottom up.
    void clearFilesLTObjectsRec();
    void resetCheckStateRec();

    /// Append: own files first, then those of the sub-directories in order.
    void getAllMusicFiles(CPtrListT<CHDMusicFile>& files) const;
    void getAllFiles(CPtrListT<CHDFile>& files) const;

    /// Negative, 0 or positive, by the short name.
    static int cmpDirShortName(const CString& name, const boost::shared_ptr<CHDDirectory>& dir);
    /// By the last component of the path.
    static int cmpDirShortName(const CQoCollPath& path, const boost::shared_ptr<CHDDirectory>& dir);

    const CQoCollPath& getPath() const noexcept { return m_path; }
    /// The last component of the path; the device for one without components.
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
