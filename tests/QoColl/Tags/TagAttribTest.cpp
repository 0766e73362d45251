#include "QoColl/Tags/TagAttrib.h"

#include "QoColl/Tags/TagSources.h"
#include "support/Print.h"

#include <gtest/gtest.h>

namespace
{
using Source = CTagAttribValue::ESrcValueType;
using namespace tagsources;
constexpr auto unheardOf = static_cast<Source>(2);

/// The chosen source and its value, then all sources with their values in their order.
CString shapeOf(const CTagAttrib& attrib)
{
    CString text(u"nothing");
    attrib.getValue(current, text);
    text.Format(u"%d=%s:", attrib.getCrtValueType(), CString(text));
    for (int index = 0; index < 3; ++index)
    {
        for (const Source source : {original, edited, unheardOf})
        {
            if (attrib.getAttribValueIdx(source) == index)
                text.AppendFormat(u" %d=%s", source, attrib.getAttribValue(source)->getValue());
        }
    }
    return text;
}
} // namespace

TEST(TagAttrib, SourcesKeepTheirOrderAndTheChoiceStaysWhateverHappensToThem)
{
    // No known type: such attributes work alike.
    CTagAttrib attrib(static_cast<CTagAttrib::EAttribType>(42));
    EXPECT_EQ(shapeOf(attrib), u"0=nothing:");
    attrib.setValue(unheardOf, u"found", false);
    attrib.setValue(original, u"old", false);
    attrib.setValue(edited, u"", true);
    attrib.setValue(unheardOf, u"again", false);
    EXPECT_EQ(shapeOf(attrib), u"1=: 2=again 0=old 1=") << "an empty value is a value";
    attrib.setCrtValueType(unheardOf);
    EXPECT_TRUE(attrib.setCrtValueAsOriginal());
    EXPECT_FALSE(attrib.setCrtValueAsOriginal()) << "it is chosen already";
    EXPECT_EQ(shapeOf(attrib), u"0=again: 2=again 0=again 1=");

    CString removed;
    EXPECT_TRUE(attrib.removeAttribValue(original, removed));
    EXPECT_FALSE(attrib.removeAttribValue(original, removed));
    EXPECT_EQ(removed, u"again");
    EXPECT_EQ(shapeOf(attrib), u"0=nothing: 2=again 1=");
    attrib.setCrtValueType(unheardOf);
    attrib.clear();
    EXPECT_FALSE(attrib.setCrtValueAsOriginal()) << "it has no value";
    EXPECT_EQ(shapeOf(attrib), u"2=nothing:");
    EXPECT_EQ(attrib.getAttribValue(edited, false), nullptr);
    attrib.getAttribValue(edited, true)->setValue(u"new");
    EXPECT_EQ(shapeOf(attrib), u"2=nothing: 1=new");
}
