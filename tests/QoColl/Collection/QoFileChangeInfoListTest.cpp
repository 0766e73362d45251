#include "QoColl/Collection/QoFileChangeInfoList.h"

#include "QoColl/Db/Records/QoFileDbItem.h"
#include "support/Print.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <random>

namespace
{
using Info = CQoFileChangeInfo;

CString numbered(int number, bool upper = false)
{
    CString path;
    path.Format(upper ? u"C:\\MUSIC\\FILE%d.MP3" : u"C:\\music\\file%d.mp3", number);
    return path;
}

/// What a walk over all entries finds.
Info* findSlowly(const CQoFileChangeInfoList& list, const CString& path)
{
    for (Info* info : list)
    {
        if (info->m_path.CompareNoCase(path) == 0)
            return info;
    }
    return nullptr;
}

int byNumberDown(void*, const Info* a, const Info* b)
{
    return b->m_path.CompareNoCase(a->m_path);
}
} // namespace

TEST(QoFileChangeInfoList, TheLastChangeOfAPathWinsWithAllItsFields)
{
    CQoFileChangeInfoList list;
    auto record = boost::make_shared<QoFileDbItem>();
    Info* entry = list.addVelmoraFile(u"C:\\a\\b.mp3", record);
    EXPECT_EQ(entry->m_dbItem, record);
    EXPECT_EQ(list.addFileToScan(u"c:\\A\\B.mp3", Info::importedFile, Info::setImportedIfNew),
              entry);
    EXPECT_EQ(entry->m_action, Info::scan);
    EXPECT_FALSE(entry->m_dbItem);
    EXPECT_EQ(record.use_count(), 1);
    EXPECT_EQ(list.addFileToMove(u"C:a\\b.mp3\\", u"C:\\new.mp3", true), entry);
    EXPECT_EQ(entry->m_scanFileType, Info::ordinaryFile);
    EXPECT_TRUE(entry->m_rescan);
    EXPECT_EQ(list.addFileToDelete(u"C:\\a\\b.mp3"), entry);
    EXPECT_EQ(entry->m_newPath, u"");
    EXPECT_EQ(list.getAction(u"C:\\A\\b.mp3"), Info::remove);
    list.addFileToScan(u"C:\\a\\b.mp3", Info::ordinaryFile, Info::setImported);
    EXPECT_EQ(list.getAction(u"C:\\a\\b.mp3"), Info::scan);
    EXPECT_EQ(list.GetSize(), 1);

    // Paths that no device has are one and the same.
    EXPECT_EQ(list.addFileToDelete(u"a\\b.mp3"), list.addFileToDelete(u"c"));
    EXPECT_NE(list.addFileToDelete(u"\\\\usb:x\\a"), list.addFileToDelete(u"\\\\wpd:x\\a"));
    EXPECT_EQ(list.GetSize(), 4);
    EXPECT_EQ(list.getAction(u"C:\\a"), Info::noAction);
}

TEST(QoFileChangeInfoList, CopiesLeaveTheirSourceAndHandedEntriesAreTaken)
{
    CQoFileChangeInfoList source;
    CQoFileChangeInfoList target;
    auto record = boost::make_shared<QoFileDbItem>();
    source.addVelmoraFile(u"C:\\1", record);
    source.addFileToDelete(u"C:\\2");
    target.addFileToDelete(u"C:\\1");
    EXPECT_EQ(target.Append(source), 1);
    EXPECT_EQ(target.GetSize(), 2);
    EXPECT_EQ(target.getAction(u"C:\\1"), Info::addVelmoraFile);
    EXPECT_NE(target.findChangeInfo(u"C:\\2"), source.findChangeInfo(u"C:\\2"));
    EXPECT_EQ(record.use_count(), 3);

    source.addFileToDelete(u"C:\\1");
    target.Copy(source);
    EXPECT_EQ(record.use_count(), 1);

    auto* info = new Info;
    info->m_action = Info::scan;
    info->m_path = u"C:\\2";
    info->m_dbItem = record;
    EXPECT_EQ(target.Add(info), 1);
    EXPECT_EQ(target.Add(target[1]), 1);
    EXPECT_EQ(target.getAction(u"c:\\2"), Info::scan);
    EXPECT_EQ(record.use_count(), 2);
    target.clear();
    EXPECT_EQ(record.use_count(), 1);
}

TEST(QoFileChangeInfoList, TheLookUpNeverLiesWhateverTheListGoesThrough)
{
    std::mt19937 random(4711);
    CQoFileChangeInfoList list;
    for (int step = 0; step < 5000; ++step)
    {
        const int number = static_cast<int>(random() % 200);
        Info* const known = list.findChangeInfo(numbered(number));
        ASSERT_EQ(known, findSlowly(list, numbered(number))) << "step " << step;
        const unsigned what = random() % 8;
        if (what == 0 && known && list.remove(known))
            delete known;
        else if (what == 1 && known)
        {
            const std::unique_ptr<Info> first(list[0]);
            list.RemoveAt(0);
        }
        else if (what == 2)
            list.sort(byNumberDown, nullptr);
        else
            list.addFileToDelete(numbered(number, random() % 2 == 0));
    }
}
