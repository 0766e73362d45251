#include "Analyze/NSDirMusicFilesInfo.h"

#include "Analyze/Folder.h"
#include "Physical/HDMusicFile.h"

#include <gtest/gtest.h>

#include <random>

namespace
{
using MusicFile = boost::shared_ptr<CHDMusicFile>;

MusicFile makeFile(const CString& name, const char16_t* artist = u"")
{
    QoFileDbItem record = Folder::record(artist, u"");
    record.path = u"C:\\m\\" + name;
    return boost::static_pointer_cast<CHDMusicFile>(
        CHDFile::createHDFile(boost::make_shared<QoFileDbItem>(record)));
}

int compareTitles(const MusicFile& a, const MusicFile& b)
{
    return a->getFileTitle().CompareNoCase(b->getFileTitle());
}

int countFiles(const CNSDirMusicFilesInfo& info, const CString& artist)
{
    void* files = nullptr;
    const CMapStringToPtr* values = info.getAtomValues(CNSAtom::Artist);
    return values && values->Lookup(artist, files)
               ? static_cast<CNSDirMusicFilesInfo::FileList*>(files)->GetSize()
               : 0;
}
} // namespace

TEST(NSDirMusicFilesInfo, HoldsFilesWhereASortedListHasThem)
{
    std::mt19937 random(1);
    for (const unsigned names : {5U, 40U, 1000U})
    {
        CNSDirMusicFilesInfo info;
        CNSDirMusicFilesInfo::FileList expected;
        for (int i = 0; i < 200; ++i)
        {
            CString name;
            name.Format(random() % 2 ? u"song %d.mp3" : u"SONG %d.mp3",
                        static_cast<int>(random() % names));
            const MusicFile file = makeFile(name);
            info.addMusicFile(file);
            expected.addSorted(file, compareTitles, false);
        }
        ASSERT_EQ(info.getTitles().GetSize(), expected.GetSize());
        for (int i = 0; i < expected.GetSize(); ++i)
        {
            ASSERT_EQ(info.m_musicFiles[i], expected[i]) << names << " names, place " << i;
            ASSERT_EQ(info.getTitles()[i], expected[i]->getFileTitle());
        }
    }
}

TEST(NSDirMusicFilesInfo, ValuesThatWereAskedForTakeInLaterFiles)
{
    CNSDirMusicFilesInfo info;
    info.addMusicFile(makeFile(u"a.mp3"));
    EXPECT_FALSE(info.getAtomValues(CNSAtom::Artist)) << "nobody has one yet";
    info.addMusicFile(makeFile(u"d.mp3", u"Second"));
    info.addMusicFile(makeFile(u"c.mp3", u"First"));
    EXPECT_EQ(countFiles(info, u"Second"), 1);
    info.addMusicFile(makeFile(u"b.mp3", u"Second"));
    EXPECT_EQ(countFiles(info, u"Second"), 2);
    EXPECT_EQ(countFiles(info, u"second"), 0) << "values differ by case";
    EXPECT_EQ(info.getValuesInOrder(CNSAtom::Artist), (std::vector<CString>{u"Second", u"First"}));
    EXPECT_FALSE(info.getAtomValues(CNSAtom::Album));
}
