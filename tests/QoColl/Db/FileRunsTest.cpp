#include "QoColl/Db/FileRuns.h"

#include "QoColl/Db/CollDbFixture.h"
#include "support/LogCapture.h"

#include <string>
#include <vector>

namespace
{
class StoredRuns : public OpenCollDbFixture
{
protected:
    void store(const std::vector<CString>& paths, const CString& collId = u"")
    {
        for (const CString& path : paths)
            insert(path.GetString(), collId.GetString());
    }

    static std::vector<int> idsOf(const QoFileDbItemArray& items)
    {
        std::vector<int> ids;
        for (const QoFileDbItemPtr& item : items)
            ids.push_back(item->id);
        return ids;
    }

    std::vector<int> idsOfAll() const
    {
        QoFileDbItemArray items;
        m_db->getAllFiles(items, false, u"", true);
        return idsOf(items);
    }

    std::vector<int> idsOfRuns() const
    {
        const auto runs = m_db->fileRuns(u"");
        EXPECT_FALSE(runs->areTooMany());
        QoFileDbItemArray items;
        while (runs->next(items, 2))
            EXPECT_EQ(items.GetSize() % 2, 0);
        EXPECT_EQ(items.GetSize(), runs->count());
        return idsOf(items);
    }
};

TEST_F(StoredRuns, GiveFilesInTheOrderOfAnArrayOfAll)
{
    const std::vector<std::vector<CString>> cases = {
        {},
        {u"a"},
        {u"a", u"b", u"c", u"d", u"e"},
        {u"a", u"c", u"e", u"b", u"d", u"f"},
        {u"b", u"c", u"z1", u"z2", u"d", u"e", u"a", u"Z3"},
        {u"e", u"d", u"c", u"b", u"a"},
        {u"a", u"b", u"B", u"c"},
        {u"a", u"b", u"c", u"B", u"d", u"A"},
    };
    for (const std::vector<CString>& paths : cases)
    {
        m_db->deleteColl(u"");
        store(paths);
        EXPECT_EQ(idsOfRuns(), idsOfAll());
        EXPECT_EQ(idsOfAll().size(), paths.size());
    }
}

TEST_F(StoredRuns, LeaveOtherCollectionsAndRowsWithoutAnIdOut)
{
    store({u"a", u"c"});
    store({u"b"}, u"phone");
    store({u"d", u"b"});
    LogCapture log;
    QoCollDbInspector::connection(*m_db).Execute(
        u"UPDATE FILE_T SET FT_ID = -1 WHERE FT_PATH = 'd'");
    EXPECT_EQ(idsOfRuns(), (std::vector<int>{1, 5, 2}));
    EXPECT_TRUE(log.has("a row of FILE_T is left out: its id is -1", 10));
}

TEST_F(StoredRuns, AreTooManyWhereRowsChangedTheirPlacesAgainAndAgain)
{
    for (char16_t name = u'z'; name >= u'a'; --name)
        store({CString(std::u16string(1, name).c_str())});
    const auto runs = m_db->fileRuns(u"");
    EXPECT_TRUE(runs->areTooMany());
    QoFileDbItemArray items;
    EXPECT_FALSE(runs->next(items, 2));
    EXPECT_TRUE(items.IsEmpty());
}
} // namespace
