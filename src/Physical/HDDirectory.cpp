#include "Physical/HDDirectory.h"

#include "Physical/HDMusicFile.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "common/MakeObject.h"

#include <vector>

namespace
{
/// Visits the directory and everything below it, parents first and siblings in order, until a visit
/// returns false. True if every visit returned true. Not recursive, since paths that come from
/// devices or shares may have any depth.
template <class Dir, class Visit>
bool walk(Dir& start, Visit visit)
{
    std::vector<Dir*> waiting{&start};
    while (!waiting.empty())
    {
        Dir* dir = waiting.back();
        waiting.pop_back();
        if (!visit(*dir))
            return false;
        const CPtrListT<CHDDirectory>& subDirs = dir->getSubDirs();
        for (int i = subDirs.GetSize(); i-- > 0;)
            waiting.push_back(subDirs[i].get());
    }
    return true;
}

/// The same path, built on the texts of the parent's path where these are equal: most of a path is
/// its parent's, and so is stored once.
CQoCollPath sharingTexts(const CQoCollPath& path, const CHDDirectory& parent)
{
    CQoCollPath shared = parent.getPath().child(path.getLast());
    bool same = shared.getType() == path.getType() && shared.getDevice() == path.getDevice() &&
                shared.getCount() == path.getCount();
    for (int i = 0; same && i < path.getCount(); ++i)
        same = shared.getComponents()[i] == path.getComponents()[i];
    return same ? shared : path;
}

bool findByName(const CPtrListT<CHDDirectory>& dirs, const CString& shortName, int& index)
{
    const auto compare = [](const CString& name, const boost::shared_ptr<CHDDirectory>& other)
    { return CHDDirectory::cmpDirShortName(name, other); };
    return dirs.findByKey(shortName, 0, dirs.GetSize(), compare, index);
}

/// For the search of a path that is given as a text, or as another file has it.
constexpr auto byPath = [](const auto& path, const boost::shared_ptr<CHDFile>& file)
{ return CHDFile::cmpFilePath(path, file); };
} // namespace

constinit const boost::shared_ptr<CHDDirectory> CHDDirectory::NullDir;

boost::shared_ptr<CHDDirectory>
CHDDirectory::createDir(const CQoCollPath& path, const boost::shared_ptr<CHDDirectory>& parent)
{
    auto dir = qo::makeObject<CHDDirectory>(QO_HERE(u".\\Physical\\HDDirectory"), Key(), path);
    if (parent)
        addSubDir(parent, dir);
    return dir;
}

CHDDirectory::CHDDirectory(Key, const CQoCollPath& path)
    : CHDObject(HD_Directory)
    , m_path(path)
    , m_shortName(path.isEmpty() ? path.getDevice() : path.getLast())
{
}

CHDDirectory::~CHDDirectory()
{
    clear();
}

CString CHDDirectory::toString(bool full) const
{
    return m_path.toString(full);
}

int CHDDirectory::getItemCount() const
{
    return m_subDirs.GetSize() + m_files.GetSize();
}

int CHDDirectory::getRecItemCount() const
{
    int count = 0;
    walk(*this,
         [&](const CHDDirectory& dir)
         {
             count += dir.getItemCount();
             return true;
         });
    return count;
}

int CHDDirectory::getRecFileCount() const
{
    int count = 0;
    walk(*this,
         [&](const CHDDirectory& dir)
         {
             count += dir.m_files.GetSize();
             return true;
         });
    return count;
}

bool CHDDirectory::hasMusicFilesRec() const
{
    return !walk(*this,
                 [](const CHDDirectory& dir)
                 {
                     for (const auto& file : dir.m_files)
                     {
                         if (file->hasMusicFilesRec())
                             return false;
                     }
                     return true;
                 });
}

bool CHDDirectory::addSubDir(const boost::shared_ptr<CHDDirectory>& parent,
                             const boost::shared_ptr<CHDDirectory>& dir)
{
    int index = 0;
    if (findByName(parent->m_subDirs, dir->m_shortName, index))
        return false;
    parent->m_subDirs.InsertAt(index, dir);
    dir->m_parent = parent;
    dir->m_path = sharingTexts(dir->m_path, *parent);
    return true;
}

void CHDDirectory::removeSubDir(const boost::shared_ptr<CHDDirectory>& dir)
{
    // The argument may be a reference to the handle in the list, which remove() destroys.
    const boost::shared_ptr<CHDDirectory> kept = dir;
    int index = 0;
    if (findByName(m_subDirs, kept->m_shortName, index) && m_subDirs[index] == kept)
        m_subDirs.RemoveAt(index);
    else
        m_subDirs.remove(kept);
    kept->m_parent.reset();
}

bool CHDDirectory::addFile(const boost::shared_ptr<CHDDirectory>& dir,
                           const boost::shared_ptr<CHDFile>& file)
{
    CPtrListT<CHDFile>& files = dir->m_files;
    const int count = files.GetSize();
    int index = count;
    // Records usually come sorted: one comparison shows that the file belongs at the end.
    const bool behindLast = count == 0 || byPath(file->getPath(), files[count - 1]) > 0;
    if (!behindLast && files.findByKey(file->getPath(), 0, count, byPath, index))
        return false;
    file->setParentDir(dir);
    files.InsertAt(index, file);
    return true;
}

bool CHDDirectory::takeOutFile(const boost::shared_ptr<CHDFile>& file)
{
    int index = 0;
    const int count = m_files.GetSize();
    // Callers that empty a directory take out the first file each time.
    const bool isFirst = count > 0 && m_files[0] == file;
    if (!isFirst && !m_files.findByKey(file->getPath(), 0, count, byPath, index))
        return false;
    if (m_files[index] != file)
        return false;
    m_files.RemoveAt(index);
    return true;
}

void CHDDirectory::removeFile(const boost::shared_ptr<CHDFile>& file)
{
    const boost::shared_ptr<CHDFile> kept = file;
    takeOutFile(kept);
    // Destroys this directory if the file held the last handle to it.
    kept->setParentDir(NullDir);
}

boost::shared_ptr<CHDFile> CHDDirectory::getFile(const CString& path) const
{
    int index = 0;
    const bool found = m_files.findByKey(path, 0, m_files.GetSize(), byPath, index);
    return found ? m_files[index] : boost::shared_ptr<CHDFile>();
}

boost::shared_ptr<CHDDirectory> CHDDirectory::findSubDir(const CString& shortName) const
{
    int index = 0;
    return findByName(m_subDirs, shortName, index) ? m_subDirs[index] : NullDir;
}

boost::shared_ptr<CHDDirectory> CHDDirectory::getSubDir(const CQoCollPath& path) const
{
    for (const auto& dir : m_subDirs)
    {
        if (dir->hasSamePath(path))
            return dir;
    }
    return NullDir;
}

bool CHDDirectory::hasSamePath(const CQoCollPath& path) const
{
    return m_path == path;
}

bool CHDDirectory::isEmpty() const
{
    return walk(*this, [](const CHDDirectory& dir) { return dir.m_files.IsEmpty(); });
}

void CHDDirectory::clear()
{
    m_subDirs.clear();
    m_files.clear();
}

void CHDDirectory::clearFilesLTObjectsRec()
{
    std::vector<CHDDirectory*> dirs;
    std::vector<CHDDirectory*> waiting{this};
    while (!waiting.empty())
    {
        CHDDirectory* dir = waiting.back();
        waiting.pop_back();
        dirs.push_back(dir);
        for (const auto& subDir : dir->m_subDirs)
            waiting.push_back(subDir.get());
    }
    // Parents stand before their sub-directories, so backwards is bottom up and in order.
    for (auto dir = dirs.rbegin(); dir != dirs.rend(); ++dir)
    {
        for (const auto& file : (*dir)->m_files)
            file->clearLTObjects();
    }
}

void CHDDirectory::resetCheckStateRec()
{
    walk(*this,
         [](CHDDirectory& dir)
         {
             dir.setCheckState(CQoCheckState::CS_NotChecked);
             for (const auto& file : dir.m_files)
                 file->setCheckState(CQoCheckState::CS_NotChecked);
             return true;
         });
}

void CHDDirectory::getAllMusicFiles(CPtrListT<CHDMusicFile>& files) const
{
    walk(*this,
         [&](const CHDDirectory& dir)
         {
             for (const auto& file : dir.m_files)
             {
                 if (file->getFileType() == CHDFile::FT_Music)
                     files.add(boost::static_pointer_cast<CHDMusicFile>(file));
             }
             return true;
         });
}

void CHDDirectory::getAllFiles(CPtrListT<CHDFile>& files) const
{
    walk(*this,
         [&](const CHDDirectory& dir)
         {
             for (const auto& file : dir.m_files)
                 files.add(file);
             return true;
         });
}

int CHDDirectory::cmpDirShortName(const CString& name, const boost::shared_ptr<CHDDirectory>& dir)
{
    return name.CompareNoCase(dir->m_shortName);
}

int CHDDirectory::cmpDirShortName(const CQoCollPath& path,
                                  const boost::shared_ptr<CHDDirectory>& dir)
{
    return cmpDirShortName(path.getLast(), dir);
}
