#include "core/base/JsonLine.h"

#include "core/base/Json.h"

#include <gtest/gtest.h>

#include <random>

using qo::host::Json;
using qo::host::JsonLine;

TEST(JsonLine, WritesTextsAsTheLibraryDoes)
{
    std::mt19937 random(1);
    const std::u16string pieces[] = {u"a",
                                     u"Kino",
                                     u"\"",
                                     u"\\",
                                     u"/",
                                     u"\n",
                                     u"\t\b\f\r",
                                     {u'\0', 1},
                                     u"\x1f",
                                     u"\x7f",
                                     u"ö",
                                     u"\xf00a",
                                     u"東京",
                                     u"🎵"};
    for (int i = 0; i < 2000; ++i)
    {
        std::u16string text;
        for (auto left = random() % 8; left > 0; --left)
            text += pieces[random() % std::size(pieces)];
        std::string bytes = qo::toUtf8(text);
        JsonLine line;
        line.text("a", text);
        line.number("n", -i);
        EXPECT_EQ(line.end(), dump(Json{{"a", bytes}, {"n", -i}}));
        if (!bytes.empty())
            bytes[random() % bytes.size()] = static_cast<char>(random());
        line.clear();
        line.text("b", bytes);
        line.raw("c", "null");
        const std::string shown = qo::isUtf8(bytes) ? bytes : qo::toUtf8(qo::fromUtf8(bytes));
        EXPECT_EQ(line.end(), dump(Json{{"b", shown}, {"c", nullptr}}));
    }
}
