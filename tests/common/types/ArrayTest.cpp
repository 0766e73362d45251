#include "common/types/Array.h"

#include "common/types/String.h"
#include "support/Counted.h"
#include "support/Print.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

namespace
{
template <class T>
T make(int value)
{
    return T(value);
}

template <>
CString make<CString>(int value)
{
    CString text;
    text.Format(u"%d", value);
    return text;
}

template <>
boost::shared_ptr<Counted> make<boost::shared_ptr<Counted>>(int value)
{
    return boost::make_shared<Counted>(value);
}

/// A record so large that few go into a chunk.
struct Wide
{
    Wide() = default;
    explicit Wide(int v) : value(v) {}
    bool operator==(const Wide& other) const { return value == other.value; }
    int value = 0;
    char rest[1500] = {};
};

/// Every way of reading agrees with the model.
template <class T>
void expectSame(const CArray<T>& array, const std::vector<T>& model)
{
    ASSERT_EQ(array.GetSize(), static_cast<int>(model.size()));
    ASSERT_EQ(array.GetUpperBound(), array.GetSize() - 1);
    ASSERT_TRUE(std::equal(array.begin(), array.end(), model.begin(), model.end()));
    for (int i = 0; i < array.GetSize(); ++i)
        ASSERT_EQ(array[i], model[static_cast<std::size_t>(i)]) << i;
    auto back = array.end();
    for (auto expected = model.rbegin(); expected != model.rend(); ++expected)
        ASSERT_EQ(*--back, *expected);
    ASSERT_EQ(back, array.begin());
}

/// A long row of random changes to an array and to a vector beside it. The array drifts between
/// empty and the given size, over the border between the flat and the chunked form.
template <class T>
class RandomChanges
{
public:
    RandomChanges(unsigned seed, int size) : m_random(seed), m_size(size) {}

    void run(int steps)
    {
        for (int i = 0; i < steps; ++i)
        {
            const bool growing = i % (4 * m_size) < 2 * m_size;
            if (pick(8) < (growing ? 6 : 2))
                add();
            else
                remove();
            if (i % (1 + steps / 40) == 0)
            {
                ASSERT_NO_FATAL_FAILURE(expectSame(m_array, m_model)) << "step " << i;
            }
        }
        expectSame(m_array, m_model);
    }

private:
    int pick(int below) { return static_cast<int>(m_random() % static_cast<unsigned>(below)); }
    int size() const { return static_cast<int>(m_model.size()); }

    void add()
    {
        const T value = size() > 0 && pick(4) == 0 ? m_model[static_cast<std::size_t>(pick(size()))]
                                                   : make<T>(pick(1000));
        const int at = pick(size() + 1);
        const int count = pick(20) == 0 ? pick(m_size / 2 + 1) : 1;
        switch (pick(5))
        {
        case 0:
            m_array.Add(value);
            m_model.push_back(value);
            break;
        case 1:
            if (at < size())
                m_array.SetAt(at, value), m_model[static_cast<std::size_t>(at)] = value;
            break;
        case 2:
            m_array.InsertAt(at, value, count);
            m_model.insert(m_model.begin() + at, static_cast<std::size_t>(count), value);
            break;
        default:
            m_array.InsertAt(at, value);
            m_model.insert(m_model.begin() + at, value);
        }
    }

    void remove()
    {
        if (m_model.empty())
            return;
        const int at = pick(size());
        const int count = pick(10) == 0 ? pick(size() - at + 1) : 1;
        const auto first = m_model.begin() + at;
        switch (pick(12))
        {
        case 0:
            m_array.FreeExtra();
            break;
        case 1:
            m_array.RemoveAt(at, count);
            m_model.erase(first, first + count);
            break;
        case 2:
            if (const CArray<T> copy = m_array; pick(2))
                m_array = copy;
            break;
        default:
            m_array.RemoveAt(at);
            m_model.erase(first);
        }
    }

    std::mt19937 m_random;
    int m_size;
    CArray<T> m_array;
    std::vector<T> m_model;
};

template <class T>
class ArrayOf : public testing::Test
{
};
using Elements = testing::Types<int, Counted, CString, boost::shared_ptr<Counted>, Wide>;
TYPED_TEST_SUITE(ArrayOf, Elements);
} // namespace

TYPED_TEST(ArrayOf, RandomChangesGiveWhatAVectorGives)
{
    const int chunk = static_cast<int>(qo::ChunkedStore<TypeParam>::chunkCapacity);
    for (const int size : {3, chunk / 2, chunk, 3 * chunk})
        RandomChanges<TypeParam>(static_cast<unsigned>(size), size)
            .run(std::clamp(6 * size, 3000, 12000));
    EXPECT_EQ(Counted::living(), 0);
    EXPECT_EQ(Counted::broken(), 0);
}

TYPED_TEST(ArrayOf, AnElementOfTheArrayItselfMayGoIn)
{
    const int chunk = static_cast<int>(qo::ChunkedStore<TypeParam>::chunkCapacity);
    for (const int size : {1, 4, chunk, 2 * chunk})
    {
        CArray<TypeParam> array;
        for (int i = 0; i < size; ++i)
            array.Add(make<TypeParam>(i));
        std::vector<TypeParam> model(array.begin(), array.end());
        for (int i = 0; i < 3; ++i)
        {
            array.Add(array[0]);
            array.InsertAt(0, array[array.GetUpperBound()], 2);
            array.SetAtGrow(array.GetSize() + 1, array[1]);
            model.push_back(model[0]);
            model.insert(model.begin(), 2, TypeParam(model.back()));
            model.resize(model.size() + 2, TypeParam());
            model.back() = model[1];
        }
        array.Append(array);
        const std::vector<TypeParam> once = model;
        model.insert(model.end(), once.begin(), once.end());
        const CArray<TypeParam>& same = array;
        array = same;
        ASSERT_NO_FATAL_FAILURE(expectSame(array, model)) << "size " << size;
    }
}

TEST(Array, CopiesAreIndependentAndMovesLeaveAnEmptyArray)
{
    for (const int size : {0, 5, 5000})
    {
        CArray<Counted> first;
        first.SetSize(size);
        CArray<Counted> second(first);
        second.Add(7);
        EXPECT_EQ(first.GetSize(), size);
        CArray<Counted> third(std::move(second));
        EXPECT_EQ(third.GetSize(), size + 1);
        EXPECT_EQ(second.GetSize(), 0); // NOLINT(bugprone-use-after-move): promised to be empty
        second.Add(8);
        third = std::move(second);
        EXPECT_EQ(third.GetSize(), 1);
        EXPECT_EQ(third[0].value(), 8);
    }
    EXPECT_EQ(Counted::living(), 0);
}

TEST(Array, CursorsMoveLikePointers)
{
    CArray<int> array;
    for (int i = 0; i < 10000; ++i)
        array.InsertAt(i / 2, i);
    std::vector<int> model(array.begin(), array.end());
    std::mt19937 random(5);
    auto cursor = array.begin();
    for (int i = 0; i < 20000; ++i)
    {
        const int target = static_cast<int>(random() % 10001);
        const int from = cursor - array.begin();
        cursor += target - from;
        ASSERT_EQ(cursor - array.begin(), target);
        ASSERT_EQ(cursor == array.end(), target == 10000);
        ASSERT_EQ(array.end() - cursor, 10000 - target);
        if (target < 10000)
        {
            ASSERT_EQ(*cursor, model[static_cast<std::size_t>(target)]);
        }
    }
    std::iota(array.begin(), array.end(), 0);
    EXPECT_EQ(*std::lower_bound(array.begin(), array.end(), 7531), 7531);
    EXPECT_EQ(array.begin()[9999], 9999);
}

TEST(Array, WhatTheEndOfAnElementSetsOffMayUseTheArray)
{
    struct Watcher
    {
        CArray<boost::shared_ptr<Watcher>>* array;
        std::vector<int>* seen;
        bool isClearing = false;
        ~Watcher()
        {
            seen->push_back(array->GetSize());
            if (isClearing)
                array->RemoveAll();
        }
    };
    constexpr int chunk = qo::ChunkedStore<boost::shared_ptr<Watcher>>::chunkCapacity;
    for (const int size : {4, chunk + 1, chunk + 44, 3 * chunk})
    {
        CArray<boost::shared_ptr<Watcher>> array;
        std::vector<int> seen;
        for (int i = 0; i < size; ++i)
            array.Add(boost::shared_ptr<Watcher>(new Watcher{&array, &seen}));
        array.RemoveAt(0);
        array.RemoveAt(0, 2);
        EXPECT_EQ(seen, (std::vector<int>{size - 1, size - 2, size - 3}));
        array[0]->isClearing = true;
        seen.clear();
        array.RemoveAt(0);
        std::vector<int> expected{size - 4};
        expected.resize(static_cast<std::size_t>(size - 3));
        EXPECT_EQ(seen, expected);
        EXPECT_TRUE(array.IsEmpty());
    }
}

TEST(Array, WhatStandsInThePaddingBehindAnArrayStays)
{
    struct Holder
    {
        [[no_unique_address]] CArray<boost::shared_ptr<int>> array;
        int behind = 7;
    };
    static_assert(sizeof(Holder) == sizeof(CArray<boost::shared_ptr<int>>));
    constexpr int chunk = qo::ChunkedStore<boost::shared_ptr<int>>::chunkCapacity;
    const auto element = boost::make_shared<int>(1);
    for (const int size : {0, 1, 2, chunk + 1})
    {
        Holder one;
        Holder other;
        for (int i = 0; i < size; ++i)
            one.array.Add(element);
        other.array = one.array;
        one.array = std::move(other.array);
        one.array.FreeExtra();
        EXPECT_EQ(one.array.GetSize(), size);
        other.array.RemoveAll();
        EXPECT_EQ(one.behind + other.behind, 14) << size;
    }
}
