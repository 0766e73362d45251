#include "types/Map.h"

#include "support/Counted.h"
#include "support/Print.h"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <string>
#include <unordered_map>

namespace
{
CString keyOf(int number)
{
    CString key;
    key.Format(u"Key %d", number);
    return key;
}

using NumberMap = CMap<CString, Counted>;
using Model = std::unordered_map<std::string, int>;

void expectSame(const NumberMap& map, const Model& model)
{
    ASSERT_EQ(map.GetCount(), static_cast<int>(model.size()));
    ASSERT_EQ(map.IsEmpty(), model.empty());
    std::set<std::string> walked;
    for (POSITION position = map.GetStartPosition(); position;)
    {
        CString key;
        Counted value;
        map.GetNextAssoc(position, key, value);
        const auto found = model.find(qo::toUtf8(key));
        ASSERT_NE(found, model.end());
        ASSERT_EQ(found->second, value.value());
        ASSERT_TRUE(walked.insert(found->first).second) << "walked twice: " << found->first;
    }
    ASSERT_EQ(walked.size(), model.size());
}
} // namespace

TEST(Map, RandomChangesGiveWhatAStandardMapGives)
{
    std::mt19937 random(19);
    for (const unsigned buckets : {0U, 1U, 17U})
    {
        NumberMap map;
        map.InitHashTable(buckets);
        Model model;
        for (int i = 0; i < 6000; ++i)
        {
            const int number = static_cast<int>(random() % 400);
            const CString key = keyOf(number);
            const std::string name = qo::toUtf8(key);
            switch (random() % 5)
            {
            case 0:
                map.SetAt(key, i);
                model[name] = i;
                break;
            case 1:
                map[key] = i;
                model[name] = i;
                break;
            case 2:
                ASSERT_EQ(map.RemoveKey(key), model.erase(name) == 1);
                break;
            case 3:
            {
                Counted value(-1);
                ASSERT_EQ(map.Lookup(key, value), model.count(name) == 1);
                ASSERT_EQ(value.value(), model.count(name) ? model[name] : -1);
                break;
            }
            default:
                ASSERT_EQ(map.PLookup(key) != nullptr, model.count(name) == 1);
            }
            if (i % 500 == 0)
            {
                ASSERT_NO_FATAL_FAILURE(expectSame(map, model)) << i;
            }
        }
        const NumberMap copy(map);
        map.RemoveAll();
        map[u"new"] = 1;
        ASSERT_NO_FATAL_FAILURE(expectSame(copy, model));
        ASSERT_NO_FATAL_FAILURE(expectSame(map, {{"new", 1}}));
        map = copy;
        NumberMap moved(std::move(map));
        ASSERT_NO_FATAL_FAILURE(expectSame(moved, model));
    }
    EXPECT_EQ(Counted::living(), 0);
    EXPECT_EQ(Counted::broken(), 0);
}

TEST(Map, TheElementJustReportedMayBeRemovedDuringAWalk)
{
    CMapStringToString map;
    for (int i = 0; i < 300; ++i)
        map[keyOf(i)] = keyOf(i);
    int walked = 0;
    for (POSITION position = map.GetStartPosition(); position; ++walked)
    {
        CString key;
        CString value;
        map.GetNextAssoc(position, key, value);
        EXPECT_EQ(key, value);
        EXPECT_TRUE(map.RemoveKey(key));
    }
    EXPECT_EQ(walked, 300);
    EXPECT_TRUE(map.IsEmpty());
}

TEST(Map, KeysOfTheMapItselfMayBeUsedToChangeIt)
{
    CMapStringToString map;
    map[u"a"] = u"a";
    for (int i = 0; i < 100; ++i)
        map.SetAt(keyOf(i), *map.PLookup(u"a"));
    EXPECT_EQ(*map.PLookup(keyOf(99)), u"a");
    EXPECT_TRUE(map.RemoveKey(*map.PLookup(u"a")));
    EXPECT_EQ(map.PLookup(u"A"), nullptr);
}

TEST(Map, NumbersAreKeysToo)
{
    CMap<int, int> numbers;
    for (int i = -5000; i < 5000; ++i)
        numbers[i * 1024] = i;
    for (int i = -5000; i < 5000; ++i)
        ASSERT_EQ(numbers[i * 1024], i);
}
