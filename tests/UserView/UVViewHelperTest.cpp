#include "UserView/UVViewHelper.h"

#include "Logical/LTArtist.h"
#include "Logical/LTGenre.h"
#include "QoColl/Collection/subsets/QoCheckHelper.h"
#include "UserView/QoChangedTagFilesInfo.h"
#include "UserView/UVUtils.h"
#include "UserView/UVViewItemInfo.h"
#include "UserView/ViewText.h"
#include "support/SampleCollections.h"
#include "types/StringArray.h"

namespace
{
using View = CUVViewHelper;
using Type = CUVViewItemType;

/// The three panes as a host has them.
struct Panes
{
    View::EViewType leftType = View::leftArtists;
    View::EViewType middleType = View::viewNone;
    View::EViewType rightType = View::rightFiles;
    CUVViewItemList left;
    CUVViewItemList middle;
    CUVViewItemList right;
    CUVViewItem* leftItem = nullptr;
    CUVViewItem* middleItem = nullptr;

    static const CQoCollSubset& subset() { return CQoCollSubset::getCrtSubset(); }
    void build(AddFileInfo* add = nullptr)
    {
        View::getLeftViewItems(leftType, subset(), left, add);
        buildMiddle(add);
    }
    void buildMiddle(AddFileInfo* add = nullptr)
    {
        View::getMiddleViewItems(leftItem, leftType, middleType, subset(), middle, add);
        buildRight(add);
    }
    void buildRight(AddFileInfo* add = nullptr)
    {
        View::getRightViewItems(leftItem, middleItem, rightType, subset(), right, add);
    }
    void remove(const CQoUtils::File& file)
    {
        RemoveFileInfo info(file);
        View::removeItems(subset(), leftItem, middleItem, &left, &middle, &right, info);
        if (info.m_removedItems.findItem(Type::File, file, true))
        {
            EXPECT_FALSE(View::getFileItem(right, file));
        }
        const auto isGone = [&](const CUVViewItem* item)
        { return item && info.m_removedItems.find(item) != -1; };
        if (isGone(leftItem))
            leftItem = middleItem = nullptr;
        if (isGone(middleItem))
            middleItem = nullptr;
    }
    CQoUtils::ParentItemsInfo ofLeft() const
    {
        CQoUtils::ParentItemsInfo parents;
        CUVUtils::getParentItemsInfoCheckParent(leftItem, parents);
        return parents;
    }
    CQoUtils::ParentItemsInfo ofBoth() const
    {
        CQoUtils::ParentItemsInfo parents;
        View::getViewsParentItemsInfo(leftItem, middleItem, parents);
        return parents;
    }
    void updateMarks()
    {
        View::updateViewItemsCheckState(subset(), left, {});
        View::updateViewItemsCheckState(subset(), middle, ofLeft());
        View::updateViewItemsCheckState(subset(), right, ofBoth());
    }
};

class UVViewHelper : public RandomChanges
{
protected:
    void addSamples()
    {
        add(u"C:\\own\\a\\1.mp3", {u"ABBA", u"Gold", u"One", u"Pop", u"1992", u"1"});
        add(u"C:\\own\\a\\2.mp3", {u"ABBA", u"Gold", u"Two", u"Rock", u"", u"2"});
        add(u"C:\\own\\a\\cover.jpg", {u"ABBA", u"Gold", u"", u"", u"", u""});
        add(u"C:\\own\\b\\c\\3.mp3", {u"", u"", u"Three", u"", u"", u""});
        add(u"C:\\own\\b\\c\\4.mp3", {u"", u"Loose", u"Four", u"", u"", u""});
        add(u"C:\\foreign\\5.mp3", {u"ABBA", u"", u"Five", u"Pop", u"", u""});
        add(u"C:\\foreign\\6.doc");
    }
    void select(const char16_t* left, const char16_t* middle = nullptr)
    {
        panes.leftItem = itemNamed(panes.left, left);
        panes.middleItem = nullptr;
        panes.buildMiddle();
        if (middle)
            panes.middleItem = itemNamed(panes.middle, middle);
        panes.buildRight();
    }
    static CUVViewItem* itemNamed(const CUVViewItemList& items, const CString& name)
    {
        for (CUVViewItem* item : items)
        {
            if (item->getName() == name)
                return item;
            if (CUVViewItem* const below = itemNamed(item->getSubItems(), name))
                return below;
        }
        return nullptr;
    }
    void show(View::EViewType left, View::EViewType right)
    {
        panes.leftItem = nullptr;
        panes.middleItem = nullptr;
        panes.leftType = left;
        panes.rightType = right;
        panes.build();
    }

    /// An item at any depth; null for an empty list.
    CUVViewItem* randomItem(const CUVViewItemList& items)
    {
        CUVViewItem* item = nullptr;
        for (const CUVViewItemList* level = &items; !level->IsEmpty() && (!item || upTo(2) == 0);
             level = &item->getSubItems())
            item = (*level)[upTo(level->GetSize())];
        return item;
    }
    /// Other panes, another filter, another selection, a mark, or a file.
    void changeSomething()
    {
        static constexpr View::EViewType lefts[] = {
            View::leftArtists, View::leftGenreArtists, View::leftGenres, View::leftDirs};
        static constexpr const char16_t* texts[] = {u"", u"", u"li", u"bea"};
        const int what = upTo(20);
        if (what == 0)
            show(one(lefts), upTo(2) == 0 ? View::rightFiles : View::rightTree);
        else if (what < 3)
        {
            const CQoUtils::ShowFilterInfo info{
                upTo(5) > 0, true, CQoUtils::ShowFilterInfo::showAll};
            CQoCollSubset::setFilterInfo(one(texts), CQoCollSubset::filterAll, info);
            show(panes.leftType, panes.rightType);
        }
        else if (what < 6)
        {
            panes.leftItem = randomItem(panes.left);
            panes.middleItem = nullptr;
            panes.buildMiddle();
            panes.middleItem = upTo(2) == 0 ? randomItem(panes.middle) : nullptr;
            panes.buildRight();
        }
        else if (what < 8 && !panes.middle.IsEmpty())
        {
            View::toggleCheckState(*randomItem(panes.middle), panes.ofLeft(), Panes::subset());
            panes.updateMarks();
        }
        else
            changeOne();
    }
    void follow()
    {
        CQoUtils::Files removed;
        CQoUtils::Files added;
        if (!CQoCollSubset::takeChanges(removed, added))
            show(panes.leftType, panes.rightType);
        for (const File& file : removed)
        {
            const CUVViewItem* const selected[] = {panes.leftItem, panes.middleItem};
            panes.remove(file);
            if (selected[0] != panes.leftItem || selected[1] != panes.middleItem)
                panes.buildMiddle();
        }
        for (const File& file : added)
        {
            AddFileInfo info(file);
            panes.build(&info);
        }
    }
    void expectAsBuiltAnew()
    {
        Panes anew;
        anew.leftType = panes.leftType;
        anew.rightType = panes.rightType;
        anew.leftItem = panes.leftItem;
        anew.middleItem = panes.middleItem;
        anew.build();
        expectSame(panes.left, anew.left);
        expectSame(panes.middle, anew.middle);
        expectSame(panes.right, anew.right);
        const CUVViewItem* const deciding = panes.middleItem ? panes.middleItem : panes.leftItem;
        if (deciding && !deciding->isDir() && panes.rightType == View::rightFiles)
        {
            ASSERT_EQ(panes.right.GetSize(), deciding->getFileCount());
        }
    }
    /// The order of files in lists of several kinds depends on how these came about.
    static void expectSame(const CUVViewItemList& followed, const CUVViewItemList& built)
    {
        ASSERT_EQ(textOf(followed, true), textOf(built, true));
        for (int i = 1; i < followed.GetSize(); ++i)
        {
            if (!followed[i]->isGroup() && !followed[i]->isFile())
            {
                ASSERT_LE(CUVViewItem::compareItems(followed[i - 1], followed[i]), 0)
                    << textOf(followed) << " / " << textOf(built);
            }
        }
    }

    Panes panes;
};
} // namespace

TEST_F(UVViewHelper, ThreePanesShowASelectionFromLeftToRight)
{
    addSamples();
    show(View::leftArtists, View::rightFiles);
    EXPECT_EQ(textOf(panes.left), "ABBA 3+1, [unknown] 2+0");
    select(u"ABBA");
    EXPECT_EQ(panes.middleType, View::middleAlbums);
    EXPECT_EQ(textOf(panes.middle), "Gold 3+0, [unknown] 0+1");
    EXPECT_EQ(panes.right.GetSize(), 4);
    select(u"ABBA", u"[unknown]");
    EXPECT_EQ(textOf(panes.right), "5.mp3 0+1");
    select(u"[unknown]");
    EXPECT_EQ(textOf(panes.middle), "Loose 1+0, [unknown] 1+0");
    EXPECT_EQ(textOf(panes.right, true), "3.mp3 1+0, 4.mp3 1+0");

    show(View::leftGenreArtists, View::rightTree);
    EXPECT_EQ(textOf(panes.left),
              "Pop 1+1 { ABBA 1+1 }, Rock 1+0 { ABBA 1+0 }, [unknown] 2+0 { [unknown] 2+0 }");
    select(u"Pop");
    EXPECT_EQ(panes.middleType, View::middleArtists);
    EXPECT_EQ(textOf(panes.middle), "ABBA 1+1 { Gold 1+0, [unknown] 0+1 }");
    EXPECT_EQ(textOf(panes.right),
              "ABBA 1+1 { Gold 1+0 { 1.mp3 1+0 }, [unknown] 0+1 { 5.mp3 0+1 } }");
    select(u"ABBA", u"Gold"); // the artist below Pop
    EXPECT_EQ(textOf(panes.right), "ABBA 1+0 { Gold 1+0 { 1.mp3 1+0 } }");

    show(View::leftGenres, View::rightFiles);
    EXPECT_EQ(textOf(panes.left), "Pop 1+1, Rock 1+0, [unknown] 2+0");
    show(View::leftDirs, View::rightFiles);
    EXPECT_EQ(textOf(panes.left), "foreign 0+2, own 5+0 { a 3+0, b 2+0 { c 2+0 } }");
    select(u"own");
    EXPECT_EQ(textOf(panes.middle), "a 3+0, b 2+0");
    EXPECT_EQ(textOf(panes.right), "");
    select(u"own", u"a");
    EXPECT_EQ(textOf(panes.right, true), "1.mp3 1+0, 2.mp3 1+0, cover.jpg 1+0");
    const CUVViewItem* const deep = itemNamed(panes.left, u"c");
    EXPECT_EQ(View::findDirItem(panes.left, CQoCollPath(u"C:\\own\\b\\c")), deep);
    EXPECT_EQ(View::getPrevLeafItem(panes.left, panes.left[1]), panes.left[0]);
    EXPECT_TRUE(View::isChildItemRec(deep, panes.left[1]));

    CQoCollSubset::setFilterInfo(u"thr", CQoCollSubset::filterAll, {});
    show(View::leftGenreArtists, View::rightTree);
    EXPECT_EQ(textOf(panes.left), "[unknown] 1+0 { [unknown] 1+0 }");
}

TEST_F(UVViewHelper, ItemsSayTheirCollectionFilesAndTexts)
{
    addSamples();
    show(View::leftGenreArtists, View::rightFiles);
    const CUVViewItem* const genre = panes.left[0];
    const CUVViewItem* const artist = genre->getSubItems()[0];
    using Coll = CQoUtils;
    EXPECT_EQ(View::getCollectionMOFast(*artist), Coll::CT_Both);
    EXPECT_EQ(View::getCollectionMO(*artist, nullptr, Panes::subset()), Coll::CT_Both);
    EXPECT_EQ(View::getCollectionMO(*panes.left[1], nullptr, Panes::subset()), Coll::CT_Own);
    select(u"Pop");
    EXPECT_EQ(View::getCollectionMP(*panes.right[0]), Coll::CT_Foreign);
    EXPECT_EQ(View::getCollectionMP(*genre), Coll::CT_Own);

    EXPECT_EQ(CUVUtils::getMusicFilesCount(artist, Coll::CT_Both), 2) << "those of the genre alone";
    EXPECT_EQ(CUVUtils::getMusicFilesCount(panes.left, Coll::CT_Both), 5);
    EXPECT_EQ(CUVUtils::getMusicFilesCount(panes.left, Coll::CT_Foreign), 1);
    EXPECT_TRUE(CUVUtils::hasHDFiles(genre, Coll::CT_Foreign));
    EXPECT_FALSE(CUVUtils::hasMusicFiles(panes.left[1], Coll::CT_Foreign));
    CStringArray artists;
    CUVUtils::getArtists(panes.left, artists);
    EXPECT_EQ(artists.join(u","), u"ABBA");
    std::vector<CUVUtils::Track> tracks;
    CUVUtils::getTracks(panes.left[1], tracks);
    ASSERT_EQ(tracks.size(), 1U);
    EXPECT_EQ(tracks[0].m_title, u"Two");

    const CUVViewItem* const file = panes.right[1];
    EXPECT_TRUE(CUVUtils::hasLTLink(file, CLTObjectType::Artist));
    EXPECT_FALSE(CUVUtils::hasLTLink(file, CLTObjectType::Album)) << "a track does not lead there";
    CUVViewItemInfo info;
    info.init(file);
    EXPECT_EQ(info.m_album, u"Gold");
    EXPECT_EQ(info.m_path, u"C:\\own\\a\\1.mp3");
    info.init(artist);
    EXPECT_EQ(info.m_genre, u"Pop");
    EXPECT_EQ(info.m_artist, u"ABBA");
    info.init(nullptr);
    EXPECT_EQ(info.m_artist, u"");
}

TEST_F(UVViewHelper, MarksReachWhatIsShownAlone)
{
    addSamples();
    show(View::leftGenreArtists, View::rightFiles);
    CUVViewItem& artist = *panes.left[0]->getSubItems()[0];
    View::toggleCheckState(artist, {}, Panes::subset());
    EXPECT_EQ(CQoCheckHelper::getCheckedHDFilesCount(CQoUtils::CT_Both), 2);
    panes.updateMarks();
    EXPECT_EQ(textOf(panes.left),
              "Pop 1+1 x { ABBA 1+1 x }, Rock 1+0 { ABBA 1+0 }, [unknown] 2+0 { [unknown] 2+0 }");
    show(View::leftDirs, View::rightFiles);
    EXPECT_EQ(textOf(panes.left), "foreign 0+2 -, own 5+0 - { a 3+0 -, b 2+0 { c 2+0 } }");

    // Under a filter a folder stands for the files that pass.
    CQoCollSubset::setFilterInfo(u"thr", CQoCollSubset::filterAll, {});
    panes.build();
    View::setCheckState(*panes.left[0], CQoCheckState::CS_Checked, {}, Panes::subset());
    EXPECT_EQ(textOf(panes.left), "own 1+0 x { b 1+0 x { c 1+0 x } }");
    CQoCollSubset::setFilterInfo(u"", CQoCollSubset::filterAll, {});
    panes.build();
    EXPECT_EQ(textOf(panes.left), "foreign 0+2 -, own 5+0 - { a 3+0 -, b 2+0 - { c 2+0 - } }");
}

TEST_F(UVViewHelper, PanesThatFollowSingleFilesAreAsIfBuiltAnew)
{
    steadyYears = true;
    for (int step = 0; step < 3000; ++step)
    {
        SCOPED_TRACE(step);
        changeSomething();
        follow();
        if (upTo(10) == 0)
        {
            CQoCollection::m_ownCollection.releaseZombieObjects();
            follow();
        }
        expectAsBuiltAnew();
        if (HasFatalFailure())
            return;
    }
}

TEST_F(UVViewHelper, ItemsKnowWhetherTheyHoldFilesWithChangedTags)
{
    addSamples();
    show(View::leftGenreArtists, View::rightFiles);
    const auto music = [](const char16_t* path)
    { return boost::dynamic_pointer_cast<CHDMusicFile>(fileAt(path)); };
    CQoChangedTagFilesInfo changed;
    const auto one = music(u"C:\\own\\a\\1.mp3");
    changed.addMusicFile(one);
    changed.addMusicFile(one);
    EXPECT_EQ(changed.getMusicFileCount(), 1);
    int own = 0;
    int foreign = 0;
    changed.getFileCount(own, foreign);
    EXPECT_EQ(own, 1);
    EXPECT_TRUE(changed.hasInfo(panes.left[0]->getSubItems()[0], {}));
    EXPECT_FALSE(changed.hasInfo(panes.left[1]->getSubItems()[0], {})) << "the artist in Rock";
    changed.removeMusicFile(music(u"C:\\own\\a\\2.mp3"));
    EXPECT_TRUE(changed.hasFile(one));

    // A file that has left its collection and forgot its objects is taken out all the same.
    remove(u"C:\\own\\a\\1.mp3");
    CQoCollection::m_ownCollection.releaseZombieObjects();
    changed.removeMusicFile(one);
    changed.getFileCount(own, foreign);
    EXPECT_EQ(own, 0);
    EXPECT_EQ(changed.getArtists().GetSize() + changed.getDirs().GetSize(), 0);
    CQoChangedTagFilesInfo::MusicFiles files;
    files.add(music(u"C:\\own\\a\\2.mp3"));
    files.add(files[0]);
    changed.setMusicFiles(files);
    EXPECT_EQ(changed.getMusicFileCount(), 1);
    changed.clear();
    EXPECT_EQ(changed.getFiles().GetSize(), 0);
}
