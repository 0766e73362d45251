#include "common/AutoListT.h"
#include "common/PtrListT.h"
#include "common/QoSortedPtrList.h"
#include "support/Counted.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace
{
using Numbers = CGenListT<int>;
using Handle = boost::shared_ptr<int>;

int compareNumbers(const int& a, const int& b)
{
    return a < b ? -1 : a > b;
}

int compareHandles(const Handle& a, const Handle& b)
{
    return compareNumbers(*a, *b);
}

int comparePlaces(const Handle& a, const Handle& b)
{
    return a < b ? -1 : b < a;
}

int scan(const CPtrListT<int>& list, const Handle& elem)
{
    const auto at = std::find(list.begin(), list.end(), elem);
    return at == list.end() ? -1 : at - list.begin();
}
} // namespace

TEST(GenListT, SearchFindsEveryElementAndEveryPlaceOfDistinctKeys)
{
    // Both sides of the size below which a range is scanned.
    for (int size = 0; size <= 40; ++size)
    {
        Numbers list;
        for (int i = 0; i < size; ++i)
            list.add(2 * i);
        for (int key = -1; key <= 2 * size; ++key)
        {
            int index = -7;
            const bool found = list.findBinary(key, 0, size, compareNumbers, index);
            EXPECT_EQ(found, key >= 0 && key < 2 * size && key % 2 == 0) << size << " " << key;
            EXPECT_EQ(index, (key + 1) / 2) << size << " " << key;
        }
    }
}

TEST(GenListT, AmongEqualElementsAShortRangeGivesTheFirstAndALongOneTheMiddle)
{
    Numbers list;
    int index = -1;
    for (int size = 1; size <= 20; ++size)
    {
        list.add(5);
        EXPECT_TRUE(list.findBinary(5, 0, size, compareNumbers, index));
        EXPECT_EQ(index, size < 9 ? 0 : size / 2);
    }
    EXPECT_TRUE(list.findBinary(5, 15, 20, compareNumbers, index));
    EXPECT_EQ(index, 15);
}

TEST(GenListT, SortedInsertionPutsAnEqualElementAheadOfTheOneItMeets)
{
    CPtrListT<int> list;
    const Handle first = boost::make_shared<int>(3);
    const Handle second = boost::make_shared<int>(3);
    EXPECT_EQ(list.addSorted(first, compareHandles, true), 0);
    EXPECT_EQ(list.addSorted(second, compareHandles, true), -1);
    EXPECT_EQ(list.addSorted(second, compareHandles, false), 0);
    EXPECT_EQ(list[1], first);
}

TEST(GenListT, SortUsesItsContextAndKeepsAllElementsEvenWithoutAnOrder)
{
    Numbers list;
    for (int i = 0; i < 2000; ++i)
        list.add(i * 7919 % 2000);
    int sign = -1;
    list.sort([](void* context, const int& a, const int& b)
              { return *static_cast<int*>(context) * compareNumbers(a, b); },
              &sign);
    int walked = 1999;
    for (int i = 0; i != -1; --walked)
        ASSERT_EQ(list.getNextElem(i), walked);
    ASSERT_EQ(walked, -1) << "the walk ends behind the last";

    list.sort([](void*, const int& a, const int& b) { return (a * 31 + b * 17) % 3 - 1; }, nullptr);
    std::vector<int> rest(list.begin(), list.end());
    std::sort(rest.begin(), rest.end());
    for (int i = 0; i < 2000; ++i)
        ASSERT_EQ(rest[static_cast<std::size_t>(i)], i);
}

TEST(AutoListT, DeletesWhatItHoldsAndNothingElse)
{
    Counted kept(1);
    {
        CListT<Counted> borrowed;
        borrowed.add(&kept);
        EXPECT_EQ(borrowed.addUnique(&kept), -1);
    }
    EXPECT_EQ(Counted::living(), 1);
    {
        CAutoListT<Counted> owned;
        owned.add(new Counted(3));
        owned.clear();
        EXPECT_EQ(Counted::living(), 1);
        owned.add(&kept);
        owned.add(new Counted(4));
        EXPECT_TRUE(owned.remove(&kept));
        EXPECT_FALSE(owned.remove(&kept));
        CAutoListT<Counted> moved;
        moved.add(new Counted(5));
        moved = std::move(owned);
        EXPECT_EQ(Counted::living(), 2);
    }
    EXPECT_EQ(Counted::living(), 1);
    EXPECT_EQ(Counted::broken(), 0);
}

TEST(PtrListT, ALongListAnswersAsAScanWouldWhateverWasDoneToIt)
{
    using List = CPtrListT<int>;
    void (*const rareChanges[])(List&, const Handle&, int) = {
        [](List& list, const Handle& elem, int at) { list.InsertAt(at, elem); },
        [](List& list, const Handle& elem, int at) { list.InsertAt(at, elem, 2); },
        [](List& list, const Handle& elem, int) { list.InsertAt(list.GetSize() + 1, elem); },
        [](List& list, const Handle& elem, int at) { list.SetAtGrow(at, elem); },
        [](List& list, const Handle& elem, int) { list.addSorted(elem, comparePlaces, false); },
        [](List& list, const Handle&, int at) { list.RemoveAt(at / 2, at - at / 2); },
        [](List& list, const Handle& elem, int) { list.add(list[0]), list.SetAt(0, elem); },
        [](List& list, const Handle& elem, int)
        {
            List other = list;
            other.FreeExtra();
            other.add(elem);
            list = std::move(other);
        }};
    std::mt19937 random(7); // NOLINT: the same run every time
    std::vector<Handle> pool;
    for (int i = 0; i < 1000; ++i)
        pool.push_back(boost::make_shared<int>(i));
    pool.resize(1030); // gaps hold null
    List list;
    int longest = 0;
    for (int step = 0; step < 20000; ++step)
    {
        const Handle& elem = pool[random() % pool.size()];
        const int size = list.GetSize();
        const int place = scan(list, elem);
        // Long lists are kept in another way than short ones: it goes up and down between them.
        const bool isShrinking = step % 4000 >= 2000;
        const unsigned choice = isShrinking && random() % 4 > 0 ? 40 : random() % 100;
        if (choice >= 60)
            ASSERT_EQ(list.addUnique(elem), place == -1 ? size : -1) << step;
        else if (choice >= 30)
            ASSERT_EQ(list.remove(elem), place != -1) << step;
        else if (choice >= 5) // a second handle of the same object
            list.add(elem);
        else if (size > 0)
            rareChanges[random() % std::size(rareChanges)](list, elem, random() % size);
        ASSERT_EQ(list.find(elem), scan(list, elem)) << step;
        longest = std::max(longest, size);
    }
    EXPECT_GT(longest, 300);
}

TEST(QoSortedPtrList, GoesByItsComparisonAndNotByIdentity)
{
    CQoSortedPtrList<int> list(compareHandles);
    const Handle inside = boost::make_shared<int>(2);
    const Handle equal = boost::make_shared<int>(2);
    list.add(boost::make_shared<int>(3));
    list.add(inside);
    EXPECT_EQ(list.add(boost::make_shared<int>(1)), 0);
    EXPECT_EQ(list.addUnique(equal), -1);
    EXPECT_EQ(list.find(equal), 1);
    EXPECT_TRUE(list.remove(equal));
    EXPECT_EQ(inside.use_count(), 1);
    EXPECT_EQ(list.find(inside), -1);
    EXPECT_FALSE(list.remove(inside));
}
