#include "Analyze/NSDirMusicFilesInfo.h"

#include "Analyze/Folder.h"
#include "Physical/HDMusicFile.h"

#include <gtest/gtest.h>

#include <vector>

TEST(NSDirMusicFilesInfo, ValuesThatWereAskedForTakeInLaterFiles)
{
    Folder folder;
    CNSDirMusicFilesInfo info;
    const auto add = [&](const char16_t* name, const char16_t* artist)
    {
        const auto file = folder.add(name, Folder::record(artist, u""));
        info.addMusicFile(boost::static_pointer_cast<CHDMusicFile>(file));
    };
    add(u"a.mp3", u"");
    EXPECT_FALSE(info.getAtomValues(CNSAtom::Artist)) << "nobody has one yet";
    add(u"d.mp3", u"Second");
    add(u"c.mp3", u"First");
    const CMapStringToPtr* const values = info.getAtomValues(CNSAtom::Artist);
    ASSERT_TRUE(values);
    add(u"b.mp3", u"Second");
    void* files = nullptr;
    ASSERT_TRUE(values->Lookup(u"Second", files));
    EXPECT_EQ(static_cast<CNSDirMusicFilesInfo::FileList*>(files)->GetSize(), 2);
    EXPECT_FALSE(values->Lookup(u"second", files)) << "values differ by case";
    EXPECT_EQ(info.getValuesInOrder(CNSAtom::Artist), (std::vector<CString>{u"Second", u"First"}));
    EXPECT_FALSE(info.getAtomValues(CNSAtom::Album));
}
