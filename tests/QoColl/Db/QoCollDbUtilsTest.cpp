#include "QoColl/Db/QoCollDbUtils.h"

#include "support/Print.h"
#include "support/Records.h"
#include "types/StringArray.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace
{
QoFileDbItemPtr makeItem(const CString& path, int id = 0)
{
    auto item = recordOf(path);
    item->id = id;
    return item;
}

std::vector<int> idsOf(const QoFileDbItemArray& items)
{
    std::vector<int> ids;
    for (const QoFileDbItemPtr& item : items)
        ids.push_back(item->id);
    return ids;
}

std::vector<int> idsOneByOne(const std::vector<QoFileDbItemPtr>& rows)
{
    QoFileDbItemArray items;
    for (QoFileDbItemPtr row : rows)
        CQoCollDbUtils::addQoDbFileItem(row, items, false);
    return idsOf(items);
}

std::vector<int> idsInBulk(std::vector<QoFileDbItemPtr> rows)
{
    QoFileDbItemArray items;
    items.Add(makeItem(u"former content"));
    CQoCollDbUtils::takeRows(rows, items);
    return idsOf(items);
}

TEST(QoCollDbUtils, BulkOrderIsThatOfOneByOneInsertion)
{
    std::mt19937 random(7);
    for (int round = 0; round < 400; ++round)
    {
        // From hardly any equal paths to hardly anything else.
        const int count = static_cast<int>(random() % 60);
        const unsigned distinct = 1 + random() % (round % 2 ? 2000 : 40);
        std::vector<QoFileDbItemPtr> rows;
        for (int i = 0; i < count; ++i)
        {
            CString path;
            path.Format(random() % 2 ? u"C:\\Music\\Track %d" : u"c:\\music\\TRACK %d",
                        random() % distinct);
            rows.push_back(makeItem(path, i + 1));
        }
        if (round % 3 == 0)
            std::stable_sort(rows.begin(),
                             rows.end(),
                             [](const auto& a, const auto& b)
                             { return a->path.CompareNoCase(b->path) < 0; });
        EXPECT_EQ(idsInBulk(rows), idsOneByOne(rows)) << "round " << round;
    }
}

TEST(QoCollDbUtils, EightEqualPathsAreMetFromTheFrontAndNineInTheMiddle)
{
    for (const int count : {8, 9})
    {
        QoFileDbItemArray items;
        for (int i = 0; i < count; ++i)
            items.Add(makeItem(u"c:\\b", i + 1));
        int index = -1;
        EXPECT_TRUE(CQoCollDbUtils::findQoDbFileItem(u"C:\\B", items, index));
        EXPECT_EQ(index, count == 8 ? 0 : 4);
        EXPECT_FALSE(CQoCollDbUtils::findQoDbFileItem(u"c:\\c", items, index));
        EXPECT_EQ(index, count);
        EXPECT_FALSE(CQoCollDbUtils::findQoDbFileItem(u"c:\\a", items));
        EXPECT_EQ(CQoCollDbUtils::findQoDbFileItem(count, items), count - 1);
        EXPECT_EQ(CQoCollDbUtils::findQoDbFileItem(count + 1, items), -1);
    }
}

TEST(QoCollDbUtils, UniqueAddingLeavesAnExistingPathAlone)
{
    QoFileDbItemArray items;
    auto first = makeItem(u"c:\\a.MP3", 1);
    auto second = makeItem(u"C:\\A.mp3", 2);
    EXPECT_EQ(CQoCollDbUtils::addQoDbFileItem(first, items, true), 0);
    EXPECT_EQ(CQoCollDbUtils::addQoDbFileItem(second, items, true), 0);
    EXPECT_EQ(CQoCollDbUtils::addQoDbFileItem(CString(u"C:\\a.mp3"), items, true), -1);
    EXPECT_EQ(idsOf(items), std::vector<int>{1});
    EXPECT_EQ(CQoCollDbUtils::addQoDbFileItem(second, items, false), 0);
    EXPECT_EQ(CQoCollDbUtils::addQoDbFileItem(CString(u"C:\\b.mp3"), items, true), 2);
    EXPECT_EQ(idsOf(items), (std::vector<int>{2, 1, 0}));
    EXPECT_EQ(items[2]->flags, 8U);

    CStringArray paths;
    paths.Add(u"before");
    CQoCollDbUtils::filesToStrPaths(items, paths);
    EXPECT_EQ(paths.join(u"|"), u"before|C:\\A.mp3|c:\\a.MP3|C:\\b.mp3");
}

TEST(QoCollDbUtils, CopiedTagsLeaveDurationAndIdentity)
{
    auto source = makeItem(u"s", 1);
    source->artist = u"artist";
    source->lyricsLoaded = true;
    source->size = source->bitrate = source->duration = 30;
    source->velmoraId = u"id";
    auto target = makeItem(u"t", 2);
    CQoCollDbUtils::copyTags(source, target);
    EXPECT_EQ(target->path + target->artist + target->velmoraId, u"tartist");
    EXPECT_TRUE(target->lyricsLoaded);
    EXPECT_EQ(target->size + target->bitrate, 60);
    EXPECT_EQ(target->duration, 0);
}
} // namespace
