#include "UserView/UVViewItem.h"

#include "Logical/LTAlbum.h"
#include "Logical/LTArtist.h"
#include "UserView/ViewText.h"
#include "support/SampleCollections.h"

namespace
{
using Type = CUVViewItemType;

class UVViewItem : public SampleCollections
{
protected:
    CUVViewItem* put(Type::EType kind, const CUVViewItem::Link& link, const CString& name)
    {
        return items.addNewItem(kind, name, link, true, previous);
    }
    std::string names() const
    {
        std::string text;
        for (const CUVViewItem* item : items)
            text += qo::toUtf8(item->getName()) + " ";
        return text;
    }

    CUVViewItemList items;
    CUVViewItem* previous = nullptr;
};
} // namespace

TEST_F(UVViewItem, DirectoriesComeFirstAlbumsByYearAndTracksByAlbumAndNumber)
{
    struct Each
    {
        const char16_t* album;
        const char16_t* number;
        const char16_t* year;
        const char16_t* name;
    };
    const Each tracks[] = {{u"B", u"2/9", u"", u"b2"},
                           {u"B", u"10", u"", u"b10"},
                           {u"A", u"", u"1970", u"a-"},
                           {u"A", u"1", u"1970", u"a1"},
                           {u"C", u"1", u"1960-05", u"c1"},
                           {u"B", u"2", u"", u"a2"}};
    std::vector<File> files;
    for (const Each& each : tracks)
    {
        CString path;
        path.Format(u"C:\\own\\%s.mp3", each.name);
        files.push_back(add(path, {u"X", each.album, u"t", u"g", each.year, each.number}));
    }
    for (const File& file : files)
        put(Type::File, file, file->getFileTitle());
    put(Type::Dir, files[0]->getParentDir(), u"zzz");
    EXPECT_EQ(names(), "zzz a1 a- a2 b2 b10 c1 ");

    items.clear();
    for (const File& file : files)
        put(Type::Album, file->getLTAssoc(CLTObjectType::Album), file->getDbItem()->album);
    EXPECT_EQ(names(), "C A A B B B ") << "the album without a year is last";
    EXPECT_EQ(previous, items[3]) << "an equal item goes after the one that the search met";
    items.addNewItem(Type::OtherAlbums, u"[unknown]", {}, false, previous);
    const File late = add(u"C:\\own\\z.mp3", {u"X", u"z", u"t", u"g", u"", u""});
    put(Type::Album, late->getLTAssoc(CLTObjectType::Album), u"z");
    EXPECT_EQ(names(), "C A A B B B z [unknown] ") << "the group stays the last";
    retag(u"C:\\own\\z.mp3", {u"X", u"z", u"t", u"g", u"1950", u""});
    CQoCollection::m_ownCollection.releaseZombieObjects();
    items.keepSorted(items[6]);
    EXPECT_EQ(names(), "z C A A B B B [unknown] ");
}

TEST_F(UVViewItem, ItemsKnowTheirKindAndAreFoundByLink)
{
    const File file = add(u"C:\\own\\1.mp3", {u"ABBA", u"Gold", u"One", u"Pop", u"", u""});
    const auto artist = file->getLTAssoc(CLTObjectType::Artist);
    CUVViewItem* const item = items.checkAddItem(Type::Artist, u"ABBA", artist, true, previous);
    EXPECT_EQ(items.checkAddItem(Type::Artist, u"ABBA", artist, true, previous), item);
    CUVViewItem* const below =
        item->getSubItems().addNewItem(Type::File, u"1.mp3", file, true, previous);
    const CUVViewItem group(Type::OtherArtists, {}, nullptr);
    EXPECT_TRUE(item->isArtist() && group.isArtist() && group.isGroup() && !item->isGroup());
    EXPECT_EQ(item->getLinkObj(Type::Artist), artist);
    EXPECT_FALSE(item->getLinkObj(Type::Album));
    EXPECT_EQ(below->getParent(), item);
    EXPECT_EQ(items.findItem(Type::File, file, true), below);
    EXPECT_EQ(items.findItem(Type::File, file, false), nullptr);
    EXPECT_EQ(items.getItemLinkObj(Type::Artist, 0), artist);
    EXPECT_FALSE(items.hasItem(Type::Artist, 1));
    const Type::EType kinds[] = {Type::Genre, Type::Artist};
    EXPECT_TRUE(items.hasItem(kinds, 2));
    EXPECT_FALSE(items.hasItem(kinds, 1));

    item->setFileCounts(1, 2);
    below->setCheckState(CQoCheckState::CS_Checked);
    CUVViewItemList copy;
    copy.clone(items);
    EXPECT_EQ(textOf(copy), textOf(items));
    EXPECT_EQ(textOf(copy), "ABBA 1+2 { 1.mp3 0+0 x }");
    EXPECT_TRUE(copy[0]->isEqual(item));
    EXPECT_EQ(copy[0]->getSubItems()[0]->getParent(), copy[0]);
}
