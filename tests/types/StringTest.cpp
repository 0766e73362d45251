#include "types/String.h"

#include "support/Print.h"
#include "types/TextPool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace
{
/// The model's answer to Replace.
std::u16string replaced(std::u16string text, const std::u16string& from, const std::u16string& to)
{
    for (std::size_t at = text.find(from); at != std::u16string::npos;
         at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

/// Many operations in random order on a few texts that share their buffers with one another, each
/// beside a std::u16string. Letters are few, so that searches hit.
class RandomTexts
{
public:
    explicit RandomTexts(unsigned seed) : m_random(seed) {}

    void step()
    {
        const std::size_t slot = m_random() % slots;
        CString& text = m_texts[slot];
        std::u16string& expected = m_models[slot];
        change(text, expected);
        look(text, expected);
    }

    void expectAllSame() const
    {
        for (std::size_t i = 0; i < slots; ++i)
        {
            ASSERT_EQ(m_texts[i], CString(m_models[i].c_str()));
            ASSERT_EQ(m_texts[i].GetLength(), static_cast<int>(m_models[i].size()));
            ASSERT_EQ(m_texts[i].GetString()[m_texts[i].GetLength()], 0);
        }
    }

private:
    static constexpr std::size_t slots = 5;

    int pick(int below) { return static_cast<int>(m_random() % static_cast<unsigned>(below)); }
    std::u16string piece()
    {
        std::u16string text;
        for (int i = pick(6); i > 0; --i)
            text += u"aAbé \t"[pick(6)];
        return text;
    }

    void change(CString& text, std::u16string& expected)
    {
        const int length = static_cast<int>(expected.size());
        const int at = pick(length + 3) - 1;
        const auto clamped = static_cast<std::size_t>(std::clamp(at, 0, length));
        const std::u16string other = piece();
        const std::size_t from = m_random() % slots;
        switch (pick(length > 300 ? 3 : 14))
        {
        case 0:
        case 1:
            text = text.Mid(at, 4);
            expected = expected.substr(clamped, 4);
            break;
        case 2:
            text = text.Left(at);
            expected = expected.substr(0, clamped);
            break;
        case 3:
            text = m_texts[from];
            expected = m_models[from];
            break;
        case 4:
            text = m_texts[from] + text;
            text += m_texts[from];
            expected = m_models[from] + expected;
            expected += std::u16string(m_models[from]);
            break;
        case 5:
            (text += other.c_str()) += u'x';
            (expected += other) += u'x';
            break;
        case 6:
        case 7:
            text.Insert(at, other.c_str());
            expected.insert(clamped, other);
            break;
        case 8:
            text.Delete(at, 3);
            expected.erase(clamped, 3);
            break;
        case 9:
        case 10:
            text.Replace(u"a", other.c_str());
            text.Replace(u'b', u'a');
            expected = replaced(replaced(expected, u"a", other), u"b", u"a");
            break;
        case 11:
        case 12:
            text += text.GetString() + clamped;
            text = text.GetString() + clamped;
            expected = (expected + expected.substr(clamped)).substr(clamped);
            break;
        default:
            if (length > 0)
                text.SetAt(length - 1, u'z'), expected.back() = u'z';
        }
    }

    void look(const CString& text, const std::u16string& expected)
    {
        const std::u16string what = u"a" + piece();
        const int start = pick(6);
        ASSERT_EQ(text.Find(what.c_str(), start),
                  static_cast<int>(expected.find(what, static_cast<std::size_t>(start))));
        ASSERT_EQ(text.ReverseFind(u'a'), static_cast<int>(expected.rfind(u'a')));
        ASSERT_EQ(text.FindOneOf(u"bz"), static_cast<int>(expected.find_first_of(u"bz")));
        ASSERT_EQ(text.Compare(what.c_str()) < 0, expected < what);
        ASSERT_EQ(text > CString(what), expected > what);
        ASSERT_EQ(text == what.c_str(), expected == what);
    }

    std::mt19937 m_random;
    CString m_texts[slots];
    std::u16string m_models[slots];
};
} // namespace

TEST(String, RandomOperationsGiveWhatAStandardStringGives)
{
    for (unsigned seed = 0; seed < 40; ++seed)
    {
        RandomTexts texts(seed);
        for (int i = 0; i < 400; ++i)
        {
            ASSERT_NO_FATAL_FAILURE(texts.step()) << "seed " << seed << " step " << i;
            ASSERT_NO_FATAL_FAILURE(texts.expectAllSame()) << "seed " << seed << " step " << i;
        }
    }
}

TEST(String, NullAndOutOfRangeArgumentsAreHarmless)
{
    const char16_t* const none = nullptr;
    CString text(none);
    EXPECT_EQ(text.Compare(none), 0);
    text = u"abc";
    text += none;
    EXPECT_EQ(text.Find(none), 0);
    EXPECT_EQ(text.Replace(none, u"x"), 0);
    EXPECT_EQ(text.Insert(1, none), 3);
    EXPECT_EQ(text.Mid(-5, 2), u"ab");
    EXPECT_EQ(text.Mid(3), u"");
    EXPECT_EQ(text.Mid(1, -1), u"");
    EXPECT_EQ(text.Right(99), u"abc");
    EXPECT_EQ(text.Right(-1), u"");
    EXPECT_EQ(text.Delete(-1, 99), 0);
    EXPECT_EQ(CString(u'x', -3), u"");
    EXPECT_EQ(CString(u"abc", -1), u"");
    EXPECT_EQ(u'.' + CString(u"abc"), u".abc");
}

TEST(String, TrimTakesWhiteSpaceOfAnyScriptFromTheEndsOnly)
{
    const char16_t* const cases[][2] = {{u"", u""},
                                        {u" \t\r\n", u""},
                                        {u"a b", u"a b"},
                                        {u" a b\u00A0", u"a b"},
                                        {u"\u3000x\u2003", u"x"}};
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(CString(text).Trim(), expected) << qo::toUtf8(CString(text));
    EXPECT_EQ(CString(u" a ").TrimLeft() + CString(u" b ").TrimRight(), u"a  b");
}

TEST(String, ABufferIsOnesOwnAndEndsAtItsZeroOrTheGivenLength)
{
    const CString original(u"Artist");
    CString text = original;
    EXPECT_TRUE(text.sharesBufferWith(original));
    text.GetBuffer(10)[2] = u'\0';
    text.ReleaseBuffer();
    EXPECT_EQ(text, u"Ar");
    text.GetBuffer(10)[2] = u'x';
    text.ReleaseBuffer(3);
    EXPECT_EQ(text, u"Arx");
    CString lower = original;
    lower.MakeLower();
    EXPECT_EQ(lower + original, u"artistArtist");
    EXPECT_TRUE(CString().sharesBufferWith(CString(u"")));
}

TEST(String, ThreadsMayCopyAndChangeTextsThatShareABuffer)
{
    const CString shared(u"a text that several threads hold at the same time");
    std::atomic<int> sound = 0;
    {
        std::vector<std::jthread> threads;
        for (const char16_t own : {u'0', u'1', u'2', u'3'})
            threads.emplace_back(
                [&, own]
                {
                    for (int i = 0; i < 5000; ++i)
                    {
                        CString mine = shared;
                        const CString second = mine;
                        mine += own;
                        sound += mine.Right(1) == CString(own) && second == shared;
                    }
                });
    }
    EXPECT_EQ(sound, 4 * 5000);
    EXPECT_EQ(shared, u"a text that several threads hold at the same time");
}

TEST(String, APoolGivesEqualTextsOneBuffer)
{
    qo::TextPool pool;
    const CString first = pool.intern(u"Björk");
    EXPECT_TRUE(first.sharesBufferWith(pool.intern(CString(u"Björk"))));
    EXPECT_FALSE(first.sharesBufferWith(pool.intern(u"björk")));
    EXPECT_TRUE(pool.intern(nullptr).IsEmpty());
}
