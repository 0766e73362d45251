#include "types/List.h"

#include "support/Counted.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <random>
#include <vector>

namespace
{
std::vector<int> forward(const CList<Counted>& list)
{
    std::vector<int> values;
    for (POSITION position = list.GetHeadPosition(); position;)
        values.push_back(list.GetNext(position).value());
    return values;
}

std::vector<int> backward(const CList<Counted>& list)
{
    std::vector<int> values;
    for (POSITION position = list.GetTailPosition(); position;)
        values.insert(values.begin(), list.GetPrev(position).value());
    return values;
}

/// As Find tells, which goes on behind a position.
int countOf(const CList<Counted>& list, int value)
{
    int hits = 0;
    for (POSITION hit = list.Find(value); hit; hit = list.Find(value, hit))
        ++hits;
    return hits;
}

POSITION positionOf(const CList<Counted>& list, int index)
{
    POSITION position = list.GetHeadPosition();
    while (index-- > 0)
        list.GetNext(position);
    return position;
}
} // namespace

TEST(List, RandomChangesGiveWhatAStandardListGives)
{
    std::mt19937 random(17);
    {
        CList<Counted> list;
        std::list<int> model;
        for (int i = 0; i < 5000; ++i)
        {
            const int value = static_cast<int>(random() % 50);
            const int at = model.empty() ? 0 : static_cast<int>(random() % model.size());
            const auto place = std::next(model.begin(), at);
            switch (model.empty() ? random() % 2 : random() % (model.size() > 40 ? 9 : 6))
            {
            case 0:
                list.AddHead(value);
                model.push_front(value);
                break;
            case 1:
                list.AddTail(value);
                model.push_back(value);
                break;
            case 2:
                list.InsertBefore(positionOf(list, at), value);
                model.insert(place, value);
                break;
            case 3:
                list.InsertAfter(positionOf(list, at), value);
                model.insert(std::next(place), value);
                break;
            case 4:
                list.SetAt(positionOf(list, at), value);
                *place = value;
                break;
            case 5:
                list.AddTail(list.GetHead());
                model.push_back(model.front());
                break;
            case 6:
                ASSERT_EQ(list.RemoveHead().value(), model.front());
                model.pop_front();
                break;
            case 7:
                ASSERT_EQ(list.RemoveTail().value(), model.back());
                model.pop_back();
                break;
            default:
                list.RemoveAt(positionOf(list, at));
                model.erase(place);
                break;
            }
            const std::vector<int> expected(model.begin(), model.end());
            ASSERT_EQ(forward(list), expected) << i;
            ASSERT_EQ(backward(list), expected) << i;
            ASSERT_EQ(list.GetCount(), static_cast<int>(model.size()));
            ASSERT_EQ(countOf(list, value), std::count(model.begin(), model.end(), value));
        }
    }
    EXPECT_EQ(Counted::living(), 0);
    EXPECT_EQ(Counted::broken(), 0);
}

TEST(List, CopiesAreIndependent)
{
    CList<int> list;
    list.AddTail(1);
    list.AddTail(2);
    list.AddTail(list);
    const CList<int> copy = list;
    list = CList<int>();
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_EQ(copy.GetCount(), 4);
    EXPECT_EQ(copy.GetTail(), 2);
}

TEST(List, PositionsStayGoodWhileOthersComeAndGo)
{
    CList<int> list;
    list.AddTail(1);
    const POSITION kept = list.AddTail(2);
    for (int i = 0; i < 100; ++i)
        list.InsertBefore(kept, i);
    for (int i = 0; i < 50; ++i)
        list.RemoveHead();
    list.AddTail(3);
    EXPECT_EQ(list.GetAt(kept), 2);
    POSITION before = kept;
    list.GetPrev(before);
    EXPECT_EQ(list.GetAt(before), 99);
}
