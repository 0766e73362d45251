#include "QoColl/Tags/TagAttrib.h"

#include "support/Print.h"

#include <gtest/gtest.h>

#include <random>
#include <utility>
#include <vector>

namespace
{
using Source = CTagAttribValue::ESrcValueType;
constexpr Source original = CTagAttribValue::SV_Original;
constexpr Source edited = CTagAttribValue::SV_Edited;
constexpr Source current = CTagAttribValue::SV_Current;

/// The attribute as the list of values that it stands for.
struct Model
{
    std::vector<std::pair<Source, CString>> values;
    Source chosen = original;

    int indexOf(Source source) const
    {
        for (std::size_t i = 0; i < values.size(); ++i)
        {
            if (values[i].first == source)
                return static_cast<int>(i);
        }
        return -1;
    }
    void set(Source source, const CString& text)
    {
        const int index = indexOf(source);
        if (index == -1)
            values.emplace_back(source, text);
        else
            values[static_cast<std::size_t>(index)].second = text;
    }
};

void expectSame(const CTagAttrib& attrib, const Model& model)
{
    ASSERT_EQ(attrib.getCrtValueType(), model.chosen);
    for (int i = 0; i <= 5; ++i)
    {
        const Source source = static_cast<Source>(i);
        const Source looked = source == current ? model.chosen : source;
        const int index = model.indexOf(looked);
        CString text = u"untouched";
        ASSERT_EQ(attrib.getValue(source, text), index != -1);
        ASSERT_EQ(text,
                  index == -1 ? CString(u"untouched")
                              : model.values[static_cast<std::size_t>(index)].second);
        if (source != current)
        {
            ASSERT_EQ(attrib.getAttribValueIdx(source), index);
        }
    }
}
} // namespace

namespace
{
void promoteBoth(CTagAttrib& attrib, Model& model)
{
    const int index = model.indexOf(model.chosen);
    const bool works = model.chosen != original && index != -1;
    ASSERT_EQ(attrib.setCrtValueAsOriginal(), works);
    if (works)
    {
        model.set(original, CString(model.values[static_cast<std::size_t>(index)].second));
        model.chosen = original;
    }
}

/// Does the same random thing to both.
void changeBoth(CTagAttrib& attrib, Model& model, std::mt19937& random)
{
    const Source source = static_cast<Source>(random() % 4);
    CString text;
    text.Format(u"%d", static_cast<int>(random() % 50));
    switch (random() % 8)
    {
    case 0:
    case 1:
    {
        const bool choose = random() % 2 == 0;
        attrib.setValue(source, text, choose);
        model.set(source, text);
        model.chosen = choose ? source : model.chosen;
        break;
    }
    case 3:
        attrib.setCrtValueType(source);
        model.chosen = source;
        break;
    case 4:
    {
        CString removed;
        const int index = model.indexOf(source);
        ASSERT_EQ(attrib.removeAttribValue(source, removed), index != -1);
        if (index != -1)
        {
            ASSERT_EQ(removed, model.values[static_cast<std::size_t>(index)].second);
            model.values.erase(model.values.begin() + index);
        }
        break;
    }
    case 5:
        promoteBoth(attrib, model);
        break;
    case 6:
    {
        const bool create = random() % 2 == 0;
        CTagAttribValue* value = attrib.getAttribValue(source, create);
        ASSERT_EQ(value != nullptr, create || model.indexOf(source) != -1);
        ASSERT_EQ(value, std::as_const(attrib).getAttribValue(value ? source : Source(5)));
        if (value)
        {
            value->setValue(text);
            model.set(source, text);
        }
        break;
    }
    default:
        if (random() % 4 == 0)
        {
            attrib.clear();
            model.values.clear();
        }
    }
}
} // namespace

TEST(TagAttrib, BehavesAsAListOfValuesWhateverIsDoneToIt)
{
    std::mt19937 random(11); // NOLINT: the same run every time
    for (int round = 0; round < 2000; ++round)
    {
        // 42 is no known type: such attributes work alike.
        CTagAttrib attrib(round % 2 ? CTagAttrib::AT_Album
                                    : static_cast<CTagAttrib::EAttribType>(42));
        Model model;
        for (int step = 0; step < 12; ++step)
        {
            changeBoth(attrib, model, random);
            ASSERT_FALSE(testing::Test::HasFatalFailure());
            expectSame(attrib, model);
        }
    }
}

TEST(TagAttrib, TypesTellClassAndWhetherTheyLiveInTheFile)
{
    for (int type = -1; type <= 12; ++type)
    {
        const auto attribType = static_cast<CTagAttrib::EAttribType>(type);
        EXPECT_EQ(CTagAttrib::getAttribClass(attribType),
                  type == 8 ? CTagAttrib::AC_Picture : CTagAttrib::AC_Text);
        EXPECT_EQ(CTagAttrib(attribType).isRealTagAttrib(), type >= 1 && type <= 8) << type;
    }
}
