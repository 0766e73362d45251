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

/// One of the changes that long lists see rarely, to a list and to the model beside it.
void changeRarely(unsigned choice,
                  const Handle& elem,
                  CPtrListT<int>& list,
                  std::vector<Handle>& model)
{
    if (choice >= 3)
    {
        const std::size_t place = choice % 2 * (model.size() + 1); // the second leaves a gap
        const std::size_t times = 1 + model.size() % 2;
        list.InsertAt(static_cast<int>(place), elem, static_cast<int>(times));
        model.resize(std::max(model.size(), place));
        model.insert(model.begin() + static_cast<std::ptrdiff_t>(place), times, elem);
    }
    else if (choice == 2)
    {
        CPtrListT<int> other = list;
        other.FreeExtra();
        other.add(elem);
        list = std::move(other);
        model.push_back(elem);
    }
    else if (!model.empty())
    {
        list.add(list[0]);
        model.push_back(Handle(model[0]));
        list.SetAt(0, elem);
        model[0] = elem;
        list.RemoveAt(1);
        model.erase(model.begin() + 1);
    }
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

TEST(GenListT, AmongEqualElementsAShortListGivesTheFirstAndALongOneTheMiddle)
{
    Numbers list;
    int index = -1;
    for (int size = 1; size <= 20; ++size)
    {
        list.add(5);
        EXPECT_TRUE(list.findBinary(5, 0, size, compareNumbers, index));
        EXPECT_EQ(index, size < 9 ? 0 : size / 2);
    }
    // Only the given range counts.
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
    EXPECT_EQ(list.addSorted(boost::make_shared<int>(1), compareHandles, true), 0);
    EXPECT_EQ(list[1], second);
    EXPECT_EQ(list[2], first);
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
    for (int i = 0; i < 2000; ++i)
        ASSERT_EQ(list[i], 1999 - i);

    list.sort([](void*, const int& a, const int& b) { return (a * 31 + b * 17) % 3 - 1; }, nullptr);
    std::vector<int> rest(list.begin(), list.end());
    std::sort(rest.begin(), rest.end());
    for (int i = 0; i < 2000; ++i)
        ASSERT_EQ(rest[static_cast<std::size_t>(i)], i);
}

TEST(GenListT, WalkByNextElementEndsWithMinusOne)
{
    Numbers list;
    list.add(4);
    list.add(6);
    int index = 0;
    EXPECT_EQ(list.getNextElem(index), 4);
    EXPECT_EQ(index, 1);
    EXPECT_EQ(list.getNextElem(index), 6);
    EXPECT_EQ(index, -1);
}

TEST(AutoListT, DeletesWhatItHoldsAndNothingElse)
{
    ASSERT_EQ(Counted::living(), 0);
    Counted kept(1);
    {
        CListT<Counted> borrowed;
        borrowed.add(&kept);
        EXPECT_EQ(borrowed.addUnique(&kept), -1);
        borrowed.clear();
        borrowed.add(&kept);
    }
    EXPECT_EQ(Counted::living(), 1);

    auto* const taken = new Counted(2);
    {
        CAutoListT<Counted> owned;
        owned.add(new Counted(3));
        owned.clear();
        EXPECT_EQ(Counted::living(), 2);
        owned.add(taken);
        owned.add(new Counted(4));
        EXPECT_TRUE(owned.remove(taken));
        EXPECT_FALSE(owned.remove(taken));
        CAutoListT<Counted> moved;
        moved.add(new Counted(5));
        moved = std::move(owned);
        EXPECT_EQ(Counted::living(), 3);
    }
    EXPECT_EQ(Counted::living(), 2);
    delete taken;
    EXPECT_EQ(Counted::broken(), 0);
}

TEST(PtrListT, ALongListAnswersAsAScanWouldWhateverWasDoneToIt)
{
    std::mt19937 random(7); // NOLINT: the same run every time
    std::vector<Handle> pool;
    for (int i = 0; i < 300; ++i)
        pool.push_back(boost::make_shared<int>(i));
    pool.resize(330); // gaps hold null
    CPtrListT<int> list;
    std::vector<Handle> model;
    bool isLong = false;
    for (int step = 0; step < 40000; ++step)
    {
        const Handle& elem = pool[random() % pool.size()];
        const auto at = std::find(model.begin(), model.end(), elem);
        const bool there = at != model.end();
        // Long lists are kept in another way than short ones: it goes up and down between them.
        const bool isShrinking = step % 4000 >= 2000;
        const unsigned choice = isShrinking && random() % 4 > 0 ? 40 : random() % 100;
        isLong |= model.size() > 300;
        if (choice >= 60)
        {
            ASSERT_EQ(list.addUnique(elem), there ? -1 : static_cast<int>(model.size()));
            if (!there)
                model.push_back(elem);
        }
        else if (choice >= 30)
        {
            ASSERT_EQ(list.remove(elem), there);
            if (there)
                model.erase(at);
        }
        else if (choice >= 20)
        {
            ASSERT_EQ(list.find(elem), there ? static_cast<int>(at - model.begin()) : -1);
        }
        else if (choice >= 5) // a second handle of the same object
        {
            list.add(elem);
            model.push_back(elem);
        }
        else
            changeRarely(choice, elem, list, model);
    }
    ASSERT_TRUE(isLong);
    ASSERT_EQ(list.GetSize(), static_cast<int>(model.size()));
    for (std::size_t i = 0; i < model.size(); ++i)
        ASSERT_EQ(list[static_cast<int>(i)], model[i]);
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
