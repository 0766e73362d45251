#include "QoColl/Sharing/QoDbExtract.h"

#include "QoColl/Db/QoCollDb.h"
#include "QoColl/Db/QoCollDbUtils.h"
#include "QoColl/Db/Records/CollInfoDbItem.h"
#include "common/CollPath.h"
#include "support/LogCapture.h"
#include "support/Print.h"
#include "support/Records.h"
#include "support/TempDir.h"
#include "types/Utf.h"

#include <gtest/gtest.h>

#include <set>

namespace
{
const std::string mark = "\xEF\xBB\xBF";
const std::string firstLine =
    mark + "QODB_EXTRACT_VERSION:1;QODB_EXTRACT_REVISION:0;TIME_INFO:1601-01-01 00:00:00;\r\n";

QoFileDbItemPtr sampleRecord(const CString& path, unsigned flags = qo::fileFlag::audio)
{
    auto item = recordOf(path);
    item->id = 17;
    item->artist = u"Ann\tSmith";
    item->title = u"Ends in a backslash\\";
    item->album = u"Two\r\nlines \\n";
    item->genre = u"Folk";
    item->trackNumber = u"3";
    item->year = u"1999";
    item->size = 5'000'000'000;
    item->duration = 1234;
    item->flags = flags;
    item->bitrate = 320;
    item->createTime = qo::fromTicks(132'000'000'000'000'001);
    return item;
}

/// The records of an extract with those lines, as "path=clipUid" in order.
std::vector<std::string> loaded(const TempDir& dir, const std::string& content, int result = 1)
{
    dir.write("extract.txt", content);
    QoFileDbItemArray files;
    EXPECT_EQ(CQoDbExtract::LoadQoDbExtract(u"17", dir.collPath("extract.txt"), files), result);
    std::vector<std::string> list;
    for (const QoFileDbItemPtr& item : files)
        list.push_back(qo::toUtf8(item->path) + "=" + qo::toUtf8(item->clipUid));
    return list;
}

std::string lineOf(const std::string& id, const std::string& path)
{
    return "INS:" + id + "\t" + path + "\ta\tt\tb\tg\t1\t2000\t5\t6\t9\t128\t7\r\n";
}
} // namespace

TEST(QoDbExtract, RecordsComeBackWholeAndOnlyMediaLeaves)
{
    const TempDir dir;
    const CString path = dir.collPath("extract.txt");
    QoFileDbItemArray files;
    files.Add(sampleRecord(u"C:\\Music\\tab\t.mp3"));
    files.Add(sampleRecord(u"C:\\Music\\notes.txt", qo::fileFlag::notMusic));
    files.Add(sampleRecord(u"\\\\nas\\films\\x.avi", qo::fileFlag::video | qo::fileFlag::notMusic));
    ASSERT_EQ(CQoDbExtract::CreateQoDbExtract(files, path, qo::fromTicks(0)), 1);
    EXPECT_EQ(dir.read("extract.txt"),
              firstLine +
                  "INS:17\tC:\\\\Music\\\\tab\\t.mp3\tAnn\\tSmith\tEnds in a "
                  "backslash\\\\\tTwo\\r\\nlines \\\\n\tFolk\t3\t1999\t5000000000\t1234\t1\t320\t"
                  "132000000000000001\r\n"
                  "INS:17\t\\\\\\\\nas\\\\films\\\\x.avi\tAnn\\tSmith\tEnds in a "
                  "backslash\\\\\tTwo\\r\\nlines \\\\n\tFolk\t3\t1999\t5000000000\t1234\t18\t320\t"
                  "132000000000000001\r\n");
    EXPECT_EQ(CQoDbExtract::IsEmptyQodbExtract(path), 0);

    QoFileDbItemArray back;
    ASSERT_EQ(CQoDbExtract::LoadQoDbExtract(u"42", path, back), CQoDbExtract::extractLoaded);
    ASSERT_EQ(back.GetSize(), 2);
    const QoFileDbItem& item = *back[1];
    EXPECT_EQ(item.path, CString(u"\\\\share:42\\C:\\Music\\tab\t.mp3"));
    EXPECT_EQ(item.id, 0);
    EXPECT_EQ(item.clipUid, CString(u"17"));
    EXPECT_EQ(item.artist, files[0]->artist);
    EXPECT_EQ(item.title, files[0]->title);
    EXPECT_EQ(item.album, files[0]->album);
    EXPECT_EQ(item.trackNumber, files[0]->trackNumber);
    EXPECT_EQ(item.size, files[0]->size);
    EXPECT_EQ(qo::toTicks(item.createTime), qo::toTicks(files[0]->createTime));
    EXPECT_EQ(back[0]->flags, 18U);

    auto row = recordOf(u"\\\\share:42\\old");
    row->id = 5;
    CQoDbExtract::CopyShareTags(back[0], row);
    EXPECT_EQ(row->title, back[0]->title);
    EXPECT_EQ(row->bitrate, 320);
    EXPECT_EQ(row->id, 5);
    EXPECT_EQ(row->path, CString(u"\\\\share:42\\old"));
}

TEST(QoDbExtract, OwnCollectionIsWrittenWithTheTimeOfItsChange)
{
    const TempDir dir;
    const CString database = dir.collPath("qodb");
    CQoCollDb::CreateDatabaseIfNotValid(database, {});
    {
        CQoCollDb db(database);
        QoFileDbItemPtr own = sampleRecord(u"C:\\own.mp3");
        QoFileDbItemPtr foreign = sampleRecord(u"C:\\foreign.mp3");
        foreign->id = 18;
        db.insertFile(own, CString());
        db.insertFile(foreign, u"device");
        CollInfoDbItem info;
        info.modifiedTime = qo::fromUnixTime(1'706'745'599, 0);
        db.setCollInfo(CString(), info);
    }
    ASSERT_EQ(CQoDbExtract::CreateQoDbExtractForAll(database, dir.collPath("extract.txt")), 1);
    const std::string text = dir.read("extract.txt");
    EXPECT_NE(text.find(";TIME_INFO:2024-01-31 23:59:59;\r\nINS:17\tC:\\\\own.mp3\t"),
              std::string::npos)
        << text;
    EXPECT_EQ(text.find("foreign"), std::string::npos);
}

TEST(QoDbExtract, FailedWriteLeavesTheFormerExtract)
{
    const TempDir dir;
    const CString path = dir.collPath("extract.txt");
    EXPECT_EQ(CQoDbExtract::CreateEmptyQoDbExtract(path), 1);
    EXPECT_EQ(dir.read("extract.txt"), firstLine);
    EXPECT_EQ(CQoDbExtract::IsEmptyQodbExtract(path), 1);
    LogCapture log;
    EXPECT_EQ(CQoDbExtract::CreateEmptyQoDbExtract(dir.collPath("none/extract.txt")), 0);
    EXPECT_TRUE(log.has("CQoDbExtract::CreateQoDbExtract error creating file", 10));
    EXPECT_EQ(CQoDbExtract::IsEmptyQodbExtract(dir.collPath("none.txt")), 1);
    EXPECT_TRUE(log.has("CQoDbExtract::IsEmptyQodbExtract error readingfile", 10));
    QoFileDbItemArray files;
    EXPECT_EQ(CQoDbExtract::LoadQoDbExtract(u"17", dir.collPath("none.txt"), files),
              CQoDbExtract::extractUnreadable);
    EXPECT_TRUE(log.has("CQoDbExtract::LoadQoDbExtract error readingfile", 10));
}

TEST(QoDbExtract, HeadersSayWhatIsRead)
{
    const TempDir dir;
    const std::string record = lineOf("1", "C:\\\\a.mp3");
    const struct
    {
        const char* header;
        int result;
        std::size_t count;
    } cases[] = {{"QODB_EXTRACT_REVISION:9;x;QODB_EXTRACT_VERSION:1", 1, 1},
                 {"QODB_EXTRACT_VERSION:2;QODB_EXTRACT_REVISION:0;", 2, 0},
                 {"QODB_EXTRACT_VERSION:99999999999999999999;", 2, 0},
                 {"QODB_EXTRACT_VERSION:-1;", 2, 0},
                 {"QODB_EXTRACT_VERSION:0;", 1, 0},
                 {"QODB_EXTRACT_VERSION:x;", 1, 0},
                 {"", 1, 0}};
    for (const auto& each : cases)
    {
        SCOPED_TRACE(each.header);
        EXPECT_EQ(loaded(dir, each.header + ("\r\n" + record), each.result).size(), each.count);
    }
    LogCapture log;
    loaded(dir, "QODB_EXTRACT_VERSION:2;QODB_EXTRACT_REVISION:3;\r\n", 2);
    EXPECT_TRUE(log.has("CQoDbExtract::LoadQoDbExtract unsupported version receive from device "
                        "[17] [2] [3] ; our version [1]",
                        10));
}

TEST(QoDbExtract, WhatIsNoRecordIsLeftOut)
{
    const TempDir dir;
    std::string text = firstLine;
    text += lineOf("1", "c:\\\\b.mp3");
    text += lineOf("2", "C:\\\\B.MP3"); // the same path: the first stays
    text += lineOf("3", "C:\\\\a.mp3\\");
    text += "DEL:4\tC:\\\\x.mp3\r\n\r\nINS:\r\n";
    text += "INS:5\tC:\\\\x.mp3\ta\tt\tb\tg\t1\t2000\t5\t6\t9\t128\r\n"; // one field is missing
    text += "INS:6\tC:\\\\six.mp3\ta\tt\tb\tg\t1\t2000\tx\tx\tx\tx\tx\tmore\tmore\r\n";
    for (const char* const path : {"relative.mp3",
                                   "",
                                   "\\\\\\\\share:1\\\\C:\\\\x.mp3",
                                   "C:\\\\..\\\\..\\\\etc\\\\passwd",
                                   "C:\\\\.\\\\x.mp3",
                                   "C:\\\\a\\\\\\\\..\\\\\\\\..\\\\x.mp3",
                                   "C:\\\\../../etc/passwd",
                                   "\\\\\\\\..\\\\m\\\\x.mp3"})
        text += lineOf("7", path);
    text += lineOf("8", std::string("C:\\\\nul\0.mp3", 12));
    text += lineOf("9", "C:\\\\" + std::string(70'000, 'x'));
    text += lineOf("10", "C:\\\\" + std::string(3 << 20, 'x'));
    text += lineOf("11", "C:\\\\unknown\\qcode.mp3");
    EXPECT_EQ(loaded(dir, text),
              (std::vector<std::string>{"\\\\share:17\\C:\\a.mp3=3",
                                        "\\\\share:17\\c:\\b.mp3=1",
                                        "\\\\share:17\\C:\\six.mp3=6",
                                        "\\\\share:17\\C:\\unknownqcode.mp3=11"}));
}

TEST(QoDbExtract, PathsOfOneFolderAreThoseOfEachAlone)
{
    const TempDir dir;
    const char16_t* const names[] = {
        u"a.mp3", u"100% %1.mp3", u"tab\t.mp3", u"C:", u" ", u"\u00E9"};
    const char16_t* const folders[] = {
        u"C:", u"C:\\100%", u"C:\\Music\\x", u"\\\\nas", u"\\\\nas\\m\tn", u"C:\\Music\\x"};
    QoFileDbItemArray files;
    std::set<std::u16string> expected;
    for (const CString folder : folders)
    {
        for (const CString name : names)
        {
            files.Add(sampleRecord(folder + u"\\" + name));
            expected.emplace(
                CQoCollPath::makeShare(u"17", CQoCollPath(files[files.GetSize() - 1]->path))
                    .toString()
                    .view());
        }
    }
    ASSERT_EQ(CQoDbExtract::CreateQoDbExtract(files, dir.collPath("extract.txt"), {}), 1);
    QoFileDbItemArray back;
    ASSERT_EQ(CQoDbExtract::LoadQoDbExtract(u"17", dir.collPath("extract.txt"), back), 1);
    std::set<std::u16string> found;
    for (const QoFileDbItemPtr& item : back)
        found.emplace(item->path.text().view());
    EXPECT_EQ(found, expected);
}

TEST(QoDbExtract, RecordsJoinThoseThatAreThereAsOneByOne)
{
    const TempDir dir;
    dir.write("extract.txt",
              firstLine + lineOf("1", "C:\\\\c.mp3") + lineOf("2", "C:\\\\a.mp3") +
                  lineOf("3", "C:\\\\b.mp3"));
    QoFileDbItemArray files;
    CQoCollDbUtils::addQoDbFileItem(u"\\\\share:17\\C:\\B.mp3", files, true);
    EXPECT_EQ(CQoDbExtract::LoadQoDbExtract(u"17", dir.collPath("extract.txt"), files), 1);
    ASSERT_EQ(files.GetSize(), 3);
    EXPECT_EQ(files[0]->clipUid, CString(u"2"));
    EXPECT_EQ(files[1]->clipUid, CString());
    EXPECT_EQ(files[2]->clipUid, CString(u"1"));
}
