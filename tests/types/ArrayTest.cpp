#include "types/Array.h"

#include "support/Counted.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

namespace
{
template <class T>
T make(int value)
{
    return T(value);
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
    {
        ASSERT_EQ(array[i], model[static_cast<std::size_t>(i)]) << i;
        const auto cursor = array.begin() + i / 2;
        ASSERT_EQ(cursor[i - i / 2], model[static_cast<std::size_t>(i)]) << i;
        ASSERT_EQ(array.end() - cursor, array.GetSize() - i / 2);
        ASSERT_EQ((array.end() - array.GetSize() + i) - cursor, i - i / 2);
    }
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
            if (i % (1 + steps / 20) == 0)
            {
                ASSERT_NO_FATAL_FAILURE(expectSame(m_array, m_model)) << "step " << i;
            }
        }
        expectSame(m_array, m_model);
        const CArray<T>& same = m_array;
        m_array.Append(same);
        m_array = same;
        const std::vector<T> once = m_model;
        m_model.insert(m_model.end(), once.begin(), once.end());
        expectSame(m_array, m_model);
        CArray<T> copy(m_array);
        copy.RemoveAll();
        CArray<T> moved(std::move(m_array));
        EXPECT_TRUE(m_array.IsEmpty()); // NOLINT(bugprone-use-after-move): promised
        m_array = std::move(moved);
        expectSame(m_array, m_model);
        EXPECT_EQ(m_behind, 7);
    }

private:
    int pick(int below) { return static_cast<int>(m_random() % static_cast<unsigned>(below)); }
    int size() const { return static_cast<int>(m_model.size()); }

    void add()
    {
        const T made = make<T>(pick(1000));
        // An element of the array itself may go in.
        const T& value = size() > 0 && pick(4) == 0 ? m_array[pick(size())] : made;
        const T copy = value;
        const int at = pick(size() + 1);
        const int count = pick(20) == 0 ? pick(m_size / 2 + 1) : 1;
        const auto place = m_model.begin() + at;
        const int choice = pick(10);
        if (choice < 2 && at < size())
        {
            m_array.SetAt(at, value);
            *place = copy;
        }
        else if (choice == 2)
        {
            m_array.SetAtGrow(size() + 1, value);
            m_model.resize(m_model.size() + 1);
            m_model.push_back(copy);
        }
        else if (choice < 5)
        {
            m_array.Add(value);
            m_model.push_back(copy);
        }
        else
        {
            m_array.InsertAt(at, value, count);
            m_model.insert(place, static_cast<std::size_t>(count), copy);
        }
    }

    void remove()
    {
        if (m_model.empty())
            return;
        const int at = pick(size());
        const int count = pick(100) == 0 ? pick(size() - at + 1) : 1;
        m_array.RemoveAt(at, count);
        m_model.erase(m_model.begin() + at, m_model.begin() + at + count);
        const int choice = pick(24);
        if (choice < 2)
            m_array.FreeExtra();
        else if (choice == 2)
        {
            const CArray<T> copy = m_array;
            m_array = copy;
        }
    }

    std::mt19937 m_random;
    int m_size;
    [[no_unique_address]] CArray<T> m_array;
    int m_behind = 7; ///< stands in the padding of the array, which has to leave it alone
    std::vector<T> m_model;
};

template <class T>
class ArrayOf : public testing::Test
{
};
using Elements = testing::Types<int, Counted, boost::shared_ptr<Counted>, Wide>;
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
