#include "Logical/NameKeys.h"

#include "support/Sign.h"
#include "types/CharClass.h"
#include "types/String.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace
{
using Key = qo::NameKeys::Key;
} // namespace

TEST(NameKeys, TheSecondNameDecidesOnlyBehindAWholeFirstOne)
{
    const auto of = [](const char16_t* name, const char16_t* next)
    { return qo::NameKeys::of(name, next); };
    EXPECT_LT(of(u"Café", u"ABBA"), of(u"café", u"ZZ Top"));
    EXPECT_LT(of(u"dream", u""), of(u"Dream", u"ABBA"));
    EXPECT_LT(of(u"dream", u"ZZ Top"), of(u"dreams", u"ABBA"));
    EXPECT_EQ(of(u"dream", u"Einstürzende Neubauten"), of(u"dream", u"Einstürzende X"));
    EXPECT_LT(of(u"symphony no. 5 in ", u"B"), of(u"symphony no. 5 in d", u"A"));
    EXPECT_LT(of(u"symphony no. 5 in c", u"B"), of(u"symphony no. 5 in d", u"A"));
    EXPECT_EQ(of(u"symphony no. 5 in c", u"B"), of(u"symphony no. 5 in C", u"A"));
    // These names differ behind what a key holds.
    EXPECT_EQ(of(u"symphony no. 5 in c minor, op. 67", u"B"),
              of(u"symphony no. 5 in c minor, op. 68", u"A"));
    EXPECT_EQ(qo::NameKeys::of(std::u16string_view(u"a\0", 2), u"A"),
              qo::NameKeys::of(std::u16string_view(u"a\0b", 3), u"B"));
}

TEST(NameKeys, AgreesWithASortedArrayThroughManyChanges)
{
    std::mt19937 random(5);
    qo::NameKeys keys;
    std::vector<Key> plain;
    const auto byName = [](const Key& a, const Key& b) { return a.rest < b.rest; };
    const auto expectSame = [&](const Key& key)
    {
        const auto [first, behind] = std::equal_range(plain.begin(), plain.end(), key);
        const qo::NameKeys::Range range = keys.find(key);
        EXPECT_EQ(range.first, first - plain.begin());
        EXPECT_EQ(range.behind, behind - plain.begin());
        const auto [begin, end] = std::equal_range(plain.begin(), plain.end(), key, byName);
        const qo::NameKeys::Range name = keys.findName(key);
        EXPECT_EQ(name.first, begin - plain.begin());
        EXPECT_EQ(name.behind, end - plain.begin());
    };
    for (int step = 0; step < 30000; ++step)
    {
        const bool growing = step / 6000 % 2 == 0;
        // Some values are so frequent that they fill several chunks.
        const Key key{1, random() % 4 == 0 ? random() % 3 * 1000 : random() % 5000, random() % 3};
        const auto at = std::lower_bound(plain.begin(), plain.end(), key);
        const auto index = static_cast<int>(at - plain.begin());
        if (step % 7 == 0)
            expectSame(key);
        if (random() % 10 < (growing ? 8 : 2))
        {
            plain.insert(at, key);
            keys.insert(index, key);
        }
        else if (at != plain.end())
        {
            plain.erase(at);
            keys.remove(index);
        }
        expectSame({1, random() % 5000, random() % 3});
        if (!plain.empty())
        {
            const std::size_t any = random() % plain.size();
            EXPECT_EQ(keys.at(static_cast<int>(any)), plain[any]);
        }
    }
    EXPECT_GT(plain.size(), 1000U);
    keys.clear();
    EXPECT_EQ(keys.find({1, 1000, 0}).behind, 0);
}

TEST(NameKeys, AnyNumberOfObjectsMayHaveOneKeyAndBePartedByAnother)
{
    constexpr int many = 70000;
    const Key one{1, 2, 5};
    const Key other{1, 2, 3};
    qo::NameKeys keys;
    keys.insert(0, {1, 1, 0});
    for (int i = 0; i < many; ++i)
        keys.insert(1 + i / 2, one);
    keys.insert(many + 1, {1, 3, 0});
    EXPECT_EQ(keys.find(one).first, 1);
    EXPECT_EQ(keys.find(one).behind, many + 1);
    for (const int place : {2, many / 2, many})
    {
        keys.insert(place, other);
        EXPECT_EQ(keys.at(place - 1), one);
        EXPECT_EQ(keys.at(place), other);
        EXPECT_EQ(keys.at(place + 1), one);
        EXPECT_EQ(keys.at(many + 2), (Key{1, 3, 0}));
        EXPECT_EQ(keys.findName(one).behind, many + 2);
        keys.remove(place);
    }
    for (int i = 0; i < many; ++i)
        keys.remove(1);
    EXPECT_EQ(keys.at(1), (Key{1, 3, 0}));
}

TEST(NameKeys, SecondNamesOutOfOrderHaveNoSayUntilAllKeysAreGone)
{
    qo::NameKeys keys;
    keys.insert(0, {1, 1, 5});
    keys.insert(1, {1, 1, 7});
    EXPECT_EQ(keys.find({1, 1, 5}).behind, 1);
    keys.insert(2, {1, 1, 6});
    EXPECT_EQ(keys.find({1, 1, 5}).behind, 3);
    keys.remove(2);
    EXPECT_EQ(keys.find({1, 1, 5}).behind, 2);
    keys.remove(0);
    keys.remove(0);
    keys.insert(0, {1, 1, 5});
    keys.insert(1, {1, 1, 7});
    EXPECT_EQ(keys.find({1, 1, 5}).behind, 1);
}
