#include "Physical/HDDirectory.h"

#include "Physical/HDMusicFile.h"
#include "QoColl/Collection/QoUtils.h"
#include "support/Print.h"
#include "support/Records.h"

#include <boost/smart_ptr/weak_ptr.hpp>
#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace
{
using Dir = boost::shared_ptr<CHDDirectory>;
using File = boost::shared_ptr<CHDFile>;

Dir makeDir(const CString& path, const Dir& parent = CHDDirectory::NullDir)
{
    return CHDDirectory::createDir(CQoCollPath(path), parent);
}

File makeFile(const CString& path, const Dir& dir)
{
    const File file = fileOf(path);
    CHDDirectory::addFile(dir, file);
    return file;
}

/// C:\m with an own file of each kind, and deeper: a\b\song.mp3 and an empty c.
class HDDirectory : public testing::Test
{
protected:
    Dir root = makeDir(u"C:\\m");
    Dir a = makeDir(u"C:\\m\\a", root);
    Dir b = makeDir(u"C:\\m\\a\\b", a);
    Dir c = makeDir(u"C:\\m\\c", root);
    File text = makeFile(u"C:\\m\\notes.txt", root);
    File song = makeFile(u"C:\\m\\a\\b\\song.mp3", b);
    File picture = makeFile(u"C:\\m\\a\\cover.png", a);

    void TearDown() override { CQoUtils::releaseHDDir(root); }
};
} // namespace

TEST_F(HDDirectory, AnswersCoverTheWholeTreeOwnFilesAheadOfThoseBelow)
{
    EXPECT_TRUE(root->isRootDir());
    EXPECT_FALSE(b->isRootDir());
    EXPECT_EQ(CQoUtils::getRootDir(b), root);
    EXPECT_EQ(CQoUtils::getRootDir(boost::shared_ptr<CHDObject>(song)), root);
    EXPECT_EQ(CQoUtils::getDir(song), b);
    EXPECT_EQ(CQoUtils::getDir(fileOf(u"C:\\m\\loose.mp3")), CHDDirectory::NullDir);
    EXPECT_EQ(makeDir(u"D:\\")->getShortName(), u"D:");
    EXPECT_EQ(root->getItemCount(), 3);
    EXPECT_EQ(root->getRecItemCount(), 6);
    EXPECT_EQ(root->getRecFileCount(), 3);
    EXPECT_TRUE(root->hasMusicFilesRec());
    EXPECT_FALSE(c->hasMusicFilesRec());
    EXPECT_FALSE(root->isEmpty());
    EXPECT_TRUE(c->isEmpty());
    makeDir(u"C:\\m\\c\\f\\g", makeDir(u"C:\\m\\c\\f", c));
    EXPECT_TRUE(c->isEmpty()) << "folders alone";

    CPtrListT<CHDFile> files;
    root->getAllFiles(files);
    EXPECT_EQ(std::vector<File>(files.begin(), files.end()),
              (std::vector<File>{text, picture, song}));
    CPtrListT<CHDMusicFile> music;
    root->getAllMusicFiles(music);
    ASSERT_EQ(music.GetSize(), 1);
    EXPECT_EQ(music[0], song);
}

TEST_F(HDDirectory, SecondOfTheSameNameInOtherCaseStaysOutside)
{
    EXPECT_TRUE(makeDir(u"C:\\m\\A", root)->isRootDir());
    EXPECT_EQ(root->getSubDirs().GetSize(), 2);
    EXPECT_EQ(makeDir(u"c:\\M\\own", root)->toString(true), u"c:\\M\\own");
    EXPECT_EQ(root->getSubDir(CQoCollPath(u"c:\\M\\A")), a);
    EXPECT_EQ(root->getSubDir(CQoCollPath(u"C:\\m\\x")), CHDDirectory::NullDir);
    EXPECT_FALSE(makeFile(u"c:\\M\\NOTES.txt", root)->getParentDir());
    EXPECT_EQ(root->getFile(u"C:\\M\\notes.TXT"), text);
    EXPECT_FALSE(root->getFile(u"C:\\m\\other.txt"));
}

TEST_F(HDDirectory, RemovingAReplacedFileLeavesItsSuccessorInPlace)
{
    // The replaced file keeps its parent, where the new one stands under the same path.
    ASSERT_TRUE(b->takeOutFile(song));
    EXPECT_EQ(song->getParentDir(), b);
    const File successor = makeFile(u"C:\\m\\a\\b\\song.mp3", b);
    CQoUtils::releaseHDFile(song);
    EXPECT_FALSE(song->getParentDir());
    EXPECT_EQ(b->getFile(song->getPath()), successor);
    b->removeFile(successor);
    EXPECT_TRUE(b->getFiles().IsEmpty());
    EXPECT_FALSE(successor->getParentDir());
}

TEST_F(HDDirectory, RemovedSubDirectoryHasNoParent)
{
    root->removeSubDir(a);
    EXPECT_TRUE(a->isRootDir());
    EXPECT_EQ(root->getSubDirs().GetSize(), 1);
    CQoUtils::releaseHDDir(a);
}

TEST(HDDirectoryOrder, FilesComeSortedWhateverTheOrderOfAdding)
{
    std::vector<File> files;
    for (int i = 0; i < 500; ++i)
    {
        CString path;
        path.Format(u"C:\\m\\%c%03d.mp3", i % 2 ? u'A' : u'a', i);
        files.push_back(fileOf(path));
    }
    std::shuffle(files.begin(), files.end(), std::mt19937(3)); // NOLINT: the same run every time
    const Dir dir = makeDir(u"C:\\m");
    for (const File& file : files)
        ASSERT_TRUE(CHDDirectory::addFile(dir, file));
    for (int i = 1; i < 500; ++i)
        ASSERT_LT(CHDFile::cmpFilePath(dir->getFiles()[i - 1]->getPath(), dir->getFiles()[i]), 0);
    for (const File& file : files)
        ASSERT_EQ(dir->getFile(file->getPath()), file);
    CQoUtils::releaseHDDir(dir);
}

TEST(HDDirectoryRelease, FreesTheWholeTreeHoweverDeep)
{
    // A share may name any depth; a path of each level would cost its square.
    constexpr int depth = 100000;
    Dir root = makeDir(u"C:\\m");
    Dir dir = root;
    for (int i = 0; i < depth; ++i)
        dir = makeDir(u"C:\\x", dir);
    const File file = makeFile(u"C:\\x\\song.mp3", dir);
    EXPECT_EQ(root->getRecItemCount(), depth + 1);
    EXPECT_TRUE(root->hasMusicFilesRec());
    file->setCheckState(CQoCheckState::CS_Checked);
    dir->setCheckState(CQoCheckState::CS_Mixed);
    root->resetCheckStateRec();
    EXPECT_TRUE(file->isNotChecked() && dir->isNotChecked());
    root->clearFilesLTObjectsRec();

    const boost::weak_ptr<CHDDirectory> deepest = dir;
    dir.reset();
    CPtrListT<CHDDirectory> roots;
    roots.add(root);
    CQoUtils::releaseHDDirs(roots);
    EXPECT_TRUE(roots.IsEmpty());
    EXPECT_TRUE(deepest.expired());
    EXPECT_FALSE(file->getParentDir());
    EXPECT_EQ(root.use_count(), 1);
}
