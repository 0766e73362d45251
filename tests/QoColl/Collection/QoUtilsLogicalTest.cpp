#include "Logical/LTAlbum.h"
#include "Logical/LTArtist.h"
#include "Logical/LTGenre.h"
#include "Logical/LTLyrics.h"
#include "Logical/LTManager.h"
#include "Logical/LTPicture.h"
#include "Logical/LTTrack.h"
#include "Physical/HDDirectory.h"
#include "Physical/HDMusicFile.h"
#include "Physical/HDPictureFile.h"
#include "Physical/HDTextFile.h"
#include "QoColl/Collection/QoCollection.h"
#include "QoColl/Collection/QoUtils.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "common/QoProgress.h"
#include "common/QoSortedPtrList.h"
#include "support/Print.h"
#include "support/TempDir.h"
#include "types/StringArray.h"

#include <boost/make_shared.hpp>
#include <boost/weak_ptr.hpp>
#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <set>
#include <tuple>

namespace
{
using File = CQoUtils::File;
using Parents = CQoUtils::ParentItemsInfo;
using Show = CQoUtils::ShowFilterInfo;

/// The trees of two collections, "C:\own" and "C:\foreign", with their logical objects.
class QoUtilsTrees : public testing::Test
{
protected:
    QoUtilsTrees()
    {
        CLTManager::init();
        own = addRoot(CQoCollection::m_ownCollection, u"C:\\own");
        foreign = addRoot(CQoCollection::m_foreignCollection, u"C:\\foreign");
    }
    ~QoUtilsTrees() override
    {
        all.clear();
        CQoCollection::m_ownCollection.clearCollection(&progress);
        CQoCollection::m_foreignCollection.clearCollection(&progress);
        CLTManager::cleanUp(false);
    }

    static CQoUtils::Dir addRoot(CQoCollection& collection, const char16_t* path)
    {
        CStringArray paths;
        paths.Add(path);
        collection.addRootDirs(paths, CQoPathsInfoMap());
        return collection.getDir(path);
    }

    /// Gets its logical objects from the tag, as far as its class has any.
    File add(const CQoUtils::Dir& dir,
             const CString& name,
             const CString& artist,
             const CString& album,
             const CString& title,
             const CString& genre)
    {
        auto item = boost::make_shared<QoFileDbItem>();
        item->path = dir->getPath().child(name).toString();
        item->artist = artist;
        item->album = album;
        item->title = title;
        item->genre = genre;
        const File file = CHDFile::createHDFile(item);
        CHDDirectory::addFile(dir, file);
        if (const auto music = boost::dynamic_pointer_cast<CHDMusicFile>(file))
            CLTManager::createMusicLTObjects(music);
        else if (const auto picture = boost::dynamic_pointer_cast<CHDPictureFile>(file))
            CLTManager::createPictureLTObjects(picture);
        else if (const auto text = boost::dynamic_pointer_cast<CHDTextFile>(file))
            CLTManager::createLyricsLTObjects(text);
        all.push_back(file);
        return file;
    }
    File music(const CQoUtils::Dir& dir, const CString& artist, const CString& title)
    {
        CString name;
        name.Format(u"%d.mp3", static_cast<int>(all.size()));
        return add(dir, name, artist, u"Album", title, u"Rock");
    }

    /// All files that name the object, and no others, each once.
    template <class X>
    void expectLinked(const CPtrListT<X>& objects)
    {
        for (const auto& object : objects)
        {
            std::multiset<File> expected;
            for (const File& file : all)
            {
                if (file->getLTAssoc(object->getType()) == object)
                    expected.insert(file);
            }
            CQoUtils::Files files;
            CQoUtils::getLinkedFiles(object, files);
            CQoUtils::getLinkedFiles(object, files);
            EXPECT_EQ(std::multiset<File>(files.begin(), files.end()), expected);
        }
    }

    CQoUtils::Dir own;
    CQoUtils::Dir foreign;
    std::vector<File> all;
    CDummyProgress progress;
};

CString pick(std::mt19937& random, std::initializer_list<const char16_t*> list)
{
    return *(list.begin() + random() % list.size());
}
} // namespace

TEST_F(QoUtilsTrees, FilesBehindALogicalObjectAreThoseThatNameIt)
{
    std::mt19937 random(7);
    for (int i = 0; i < 400; ++i)
    {
        CString name;
        name.Format(u"%d.", i);
        // Pictures and texts join what the music files before them have made.
        const CString ext = i < 200 ? CString(u"mp3") : pick(random, {u"jpg", u"txt", u"flac"});
        add(random() % 2 ? own : foreign,
            name + ext,
            pick(random, {u"", u"Ann", u"Bob"}),
            pick(random, {u"", u"One", u"Two"}),
            pick(random, {u"", u"x", u"y", u"z"}),
            pick(random, {u"", u"Rock"}));
    }
    expectLinked(CLTManager::getTracks());
    expectLinked(CLTManager::getAlbums());
    expectLinked(CLTManager::getArtists());
    expectLinked<CLTGenre>(CLTManager::getGenres());
    expectLinked(CLTManager::getLyrics());
    expectLinked(CLTManager::getPictures());

    const auto ann = CLTManager::findLTArtist(u"Ann");
    const auto one = ann->getAlbums()[0];
    const Parents ofOne{false, {}, false, {}, true, one, {}};
    EXPECT_EQ(CQoUtils::getArtistFileCount(ann, ofOne), CQoUtils::getAlbumFileCount(one));
    EXPECT_LT(CQoUtils::getAlbumFileCount(one), CQoUtils::getArtistFileCount(ann));
    // Nobody in particular: all unknown genres count, but not files that have none at all.
    const Parents nobody{true, {}, false, {}, false, {}, {}};
    int expected = 0;
    for (const File& file : all)
    {
        const auto genre = file->getLTAssoc(CLTObjectType::Genre);
        expected += file->getLTAssoc(CLTObjectType::Artist) == ann && genre && genre->isUnknown();
    }
    EXPECT_EQ(CQoUtils::getArtistFileCount(ann, nobody), expected);
}

TEST_F(QoUtilsTrees, CollectionsOfObjectsAndWhoSeesThem)
{
    const File mine = music(own, u"Ann", u"x");
    const File theirs = music(foreign, u"Ann", u"y");
    const File alone = CHDFile::createHDFile(boost::make_shared<QoFileDbItem>());
    const auto ann = CLTManager::findLTArtist(u"Ann");
    const auto trackOf = [](const File& file) { return file->getLTAssoc(CLTObjectType::Track); };
    const struct
    {
        CQoUtils::CheckObject object;
        CQoUtils::ECollectionType type;
        bool shownOwn;
        bool shownForeign;
    } rows[] = {{mine, CQoUtils::CT_Own, true, false},
                {own, CQoUtils::CT_Own, true, false},
                {theirs, CQoUtils::CT_Foreign, false, true},
                {foreign, CQoUtils::CT_Foreign, false, true},
                {trackOf(theirs), CQoUtils::CT_Foreign, false, true},
                {ann, CQoUtils::CT_Both, true, true},
                {alone, CQoUtils::CT_Own, true, false},
                {boost::make_shared<CLTArtist>(u"Nobody"), CQoUtils::CT_Own, true, false}};
    for (const auto& row : rows)
    {
        EXPECT_EQ(CQoUtils::getCollection(row.object), row.type)
            << qo::toUtf8(row.object->toString(true));
        EXPECT_EQ(CQoUtils::isObjectVisible(row.object, {true, false}), row.shownOwn);
        EXPECT_EQ(CQoUtils::isObjectVisible(row.object, {false, true}), row.shownForeign);
        EXPECT_FALSE(CQoUtils::isObjectVisible(row.object, {false, false}));
        EXPECT_TRUE(CQoUtils::matchesCollection(row.object, CQoUtils::CT_Both));
    }
    EXPECT_FALSE(CQoUtils::matchesCollection(mine, CQoUtils::CT_Foreign));
    EXPECT_TRUE(CQoUtils::matchesCollection({}, CQoUtils::CT_Both));
    EXPECT_TRUE(CQoUtils::collTypesMatch(CQoUtils::CT_Both, CQoUtils::CT_Own));
    EXPECT_FALSE(CQoUtils::collTypesMatch(CQoUtils::CT_Own, CQoUtils::CT_Foreign));

    mine->getDbItem()->source = IPostProcessingQueue::sourcePodcast;
    EXPECT_TRUE(CQoUtils::isObjectVisible(ann, {true, true, Show::ST_Velmora}));
    EXPECT_TRUE(CQoUtils::isObjectVisible(own, {true, true, Show::ST_Velmora}));
    EXPECT_FALSE(CQoUtils::isObjectVisible(foreign, {true, true, Show::ST_Velmora}));
    EXPECT_FALSE(CQoUtils::isObjectVisible(rows[7].object, {true, true, Show::showAll - 1}));
}

TEST_F(QoUtilsTrees, SimilarFilesAreOfTheSameArtistWithTheSameTitle)
{
    music(foreign, u"Ann", u"Song");
    add(foreign, u"a.txt", u"Ann", u"Album", u"Words", u"");
    const std::tuple<const char16_t*, const char16_t*, bool> rows[] = {{u"ANN", u"sONG", true},
                                                                       {u"Ann", u"Words", false},
                                                                       {u"Bob", u"Song", false},
                                                                       {u"", u"Song", false},
                                                                       {u"Ann", u"", false}};
    for (const auto& [artist, title, similar] : rows)
        EXPECT_EQ(CQoUtils::existSimilarFileInForeignCollection(music(own, artist, title)), similar)
            << similar;
    EXPECT_FALSE(CQoUtils::existSimilarFileInForeignCollection({}));
}

TEST_F(QoUtilsTrees, WhatAlbumsAndArtistsTellOfTheirFiles)
{
    const TempDir dir;
    const File one = music(own, u"Ann", u"x");
    const File two = music(own, u"Ann", u"y");
    const auto ann = CLTManager::findLTArtist(u"Ann");
    const auto album = ann->getAlbums()[0];
    EXPECT_EQ(CQoUtils::getAlbumYear(album), 0);
    const auto second =
        boost::dynamic_pointer_cast<CLTTrack>(two->getLTAssoc(CLTObjectType::Track));
    second->setNumberAndYear(u"1", u"1998-03");
    EXPECT_EQ(CQoUtils::getAlbumYear(album), 1998);

    using Source = IPostProcessingQueue;
    EXPECT_EQ(CQoUtils::getArtistNonMusicFilesSource(ann), Source::sourceNone);
    one->getDbItem()->flags = qo::fileFlag::notMusic;
    one->getDbItem()->source = Source::sourcePodcast;
    EXPECT_EQ(CQoUtils::getArtistNonMusicFilesSource(ann), Source::sourcePodcast);
    two->getDbItem()->flags = qo::fileFlag::notMusic;
    EXPECT_EQ(CQoUtils::getArtistNonMusicFilesSource(ann), Source::sourceSeveral);

    dir.write("cover.png", "x");
    const CString cover = dir.collPath("cover.png");
    one->getDbItem()->picturePath = dir.collPath("gone.png");
    EXPECT_EQ(CQoUtils::getTagPictureTempPath(one), u"");
    EXPECT_EQ(CQoUtils::getAlbumCoverPath(album), u"");
    two->getDbItem()->picturePath = cover;
    EXPECT_EQ(CQoUtils::getTagPictureTempPath(two), cover);
    EXPECT_EQ(CQoUtils::getAlbumCoverPath(album), cover);
    two->getDbItem()->picturePath.Empty();
    const File picture = add(own, u"front.jpg", u"Ann", u"Album", u"", u"");
    picture->getDbItem()->path = cover;
    EXPECT_EQ(CQoUtils::getAlbumCoverPath(album), cover);
}

TEST_F(QoUtilsTrees, OrdersByKindHoldEveryObjectOnce)
{
    const auto sub = CHDDirectory::createDir(CQoCollPath(u"C:\\own\\z"), own);
    CQoSortedPtrList<CQoCheckObject> sorted(CQoUtils::compareCheckObjectByType);
    CPtrListT<CQoCheckObject> objects;
    for (const char16_t* artist : {u"Bob", u"", u"Ann", u""})
        objects.add(music(sub, artist, u"x"));
    objects.add(sub);
    objects.add(own);
    for (const auto& artist : CLTManager::getArtists())
        objects.add(artist);
    objects.add(CLTManager::getGenres()[0]);
    for (int round = 0; round < 2; ++round)
    {
        for (const auto& object : objects)
            sorted.addUnique(object);
    }
    ASSERT_EQ(sorted.GetSize(), objects.GetSize());
    CString text;
    for (const auto& object : sorted)
    {
        EXPECT_EQ(sorted[sorted.find(object)], object);
        text += object->toString(true) + u" ";
    }
    EXPECT_EQ(text,
              u"C:\\own C:\\own\\z C:\\own\\z\\0.mp3 C:\\own\\z\\1.mp3 C:\\own\\z\\2.mp3 "
              u"C:\\own\\z\\3.mp3 Ar:[unknown] Ar:[unknown] Ar:Ann Ar:Bob Ge:Rock ");

    CQoUtils::Files dragged;
    CQoUtils::getDraggedFiles(objects, dragged);
    EXPECT_EQ(dragged.GetSize(), 4);
    CQoUtils::Files direct;
    CQoUtils::getDirFiles(own, false, direct);
    EXPECT_TRUE(direct.IsEmpty());
    CPtrListT<CHDDirectory> dirs;
    CQoUtils::getDirSubDirs(own, true, dirs);
    CQoUtils::getDirFiles(dirs[0], false, direct);
    EXPECT_EQ(direct.GetSize(), 4);
}

TEST_F(QoUtilsTrees, ReleaseFreesAllThatOnlyTheFilesHeldEvenIfThePathsChanged)
{
    auto root = CHDDirectory::createDir(CQoCollPath(u"C:\\loose"), CHDDirectory::NullDir);
    boost::weak_ptr<CHDDirectory> lastDir;
    for (int d = 0; d < 20; ++d)
    {
        CString name;
        name.Format(u"%d", d);
        const auto dir = CHDDirectory::createDir(root->getPath().child(name), root);
        for (int i = 0; i < 200; ++i)
            music(dir, u"Ann", u"x");
        add(dir, u"x.jpg", u"Ann", u"Album", u"", u"");
        add(dir, u"x.txt", u"Ann", u"Album", u"x", u"");
        lastDir = dir;
    }
    std::mt19937 random(3);
    for (const File& file : all)
    {
        if (random() % 3 == 0)
        {
            CString path;
            path.Format(u"C:\\%d", static_cast<int>(random() % 1000));
            file->getDbItem()->path = path;
        }
        if (random() % 10 == 0)
            file->setParentDir(random() % 2 ? root : CHDDirectory::NullDir);
    }
    boost::weak_ptr<CHDFile> lastFile = all.back();
    CPtrListT<CHDDirectory> roots;
    roots.add(root);
    root.reset();
    CQoUtils::releaseHDDirs(roots);
    EXPECT_TRUE(roots.IsEmpty());
    EXPECT_TRUE(lastDir.expired());
    for (const File& file : all)
        EXPECT_FALSE(file->getParentDir());
    CLTManager::cleanUp(false);
    EXPECT_TRUE(CLTManager::getTracks().IsEmpty() && CLTManager::getAlbums().IsEmpty());
    EXPECT_TRUE(CLTManager::getArtists().IsEmpty() && CLTManager::getGenres().IsEmpty());
    EXPECT_TRUE(CLTManager::getLyrics().IsEmpty() && CLTManager::getPictures().IsEmpty());
    all.clear();
    EXPECT_TRUE(lastFile.expired());
}

TEST_F(QoUtilsTrees, ReleaseOfAFolderWithVeryManySubFoldersTakesNoLongerThanItsMaking)
{
    auto root = CHDDirectory::createDir(CQoCollPath(u"C:\\wide"), CHDDirectory::NullDir);
    const auto seconds = [](const auto& work)
    {
        const auto start = std::chrono::steady_clock::now();
        work();
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    const auto make = [&]
    {
        for (int i = 0; i < 60'000; ++i)
        {
            CString name;
            name.Format(u"%05d", i);
            CHDDirectory::createDir(root->getPath().child(name), root);
        }
    };
    const double made = seconds(make);
    EXPECT_LT(seconds([&] { CQoUtils::releaseHDDir(root); }), made + 0.5);
    EXPECT_TRUE(root->getSubDirs().IsEmpty());
}
