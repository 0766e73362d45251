#include "common/CollPath.h"

#include "support/Print.h"

#include <gtest/gtest.h>

#include <random>
#include <utility>

namespace
{
CString shapeOf(const CQoCollPath& path)
{
    CString shape;
    shape.Format(u"%d|%s|%s", path.getType(), path.getDevice(), path.getComponents().join(u"|"));
    return shape;
}
} // namespace

TEST(CollPath, TextsParseByTheirForm)
{
    const std::pair<const char16_t*, const char16_t*> cases[] = {
        {u"C:\\dir\\file.mp3", u"1|C:|dir|file.mp3"},
        {u"C:", u"1|C:|"},
        {u"C:\\", u"1|C:|"},
        {u"C:\\dir\\", u"1|C:|dir"},
        {u"C:\\a\\\\b\\c", u"1|C:|a\\\\b|c"},
        {u"\\\\server\\x", u"2|\\\\server|x"},
        {u"\\\\usb:ABC\\dir", u"3|ABC|dir"},
        {u"\\\\USB:A%1B\\100%%\\x%zy", u"3|A\\B|100%|xzy"},
        {u"\\\\pplugin:a:b\\c", u"5|a:b|c"},
        {u"\\\\share:7\\C:\\x", u"8|7|C:|x"},
        {u"\\\\foo:bar\\x", u"0||"},
        {u"\\\\", u"0||"},
        {u"\\\\\\x", u"0||"},
        {u"C", u"0||"},
        {u"dir\\file", u"0||"},
        {u"", u"0||"}};
    for (const auto& [text, shape] : cases)
    {
        EXPECT_EQ(shapeOf(CQoCollPath(text)), CString(shape));
        EXPECT_EQ(CQoCollPath::typeOf(text), CQoCollPath(text).getType());
    }
    EXPECT_EQ(CQoCollPath(u"C:").toString(), CString(u"C:\\"));
    EXPECT_EQ(shapeOf(CQoCollPath(u"a\\b", true)), CString(u"0||a|b"));
}

TEST(CollPath, EscapedComponentsOfAnyTextComeBack)
{
    std::mt19937 random(3);
    const std::u16string_view letters = u"%\\1ab: ";
    for (int round = 0; round < 2000; ++round)
    {
        CStringArray components;
        for (unsigned i = random() % 4 + 1; i > 0; --i)
        {
            CString text(u'x');
            for (unsigned n = random() % 6; n > 0; --n)
                text += letters[random() % letters.size()];
            components.Add(text);
        }
        const CQoCollPath path(CQoCollPath::physicalPlugin, components[0], components);
        EXPECT_EQ(shapeOf(CQoCollPath(path.toString())), shapeOf(path));
    }
}

TEST(CollPath, RelationsIgnoreCaseAndCountComponents)
{
    const CQoCollPath root(u"C:\\Music");
    const CQoCollPath file(u"c:\\MUSIC\\A\\b.mp3");
    EXPECT_TRUE(file.isSubPathOf(root));
    EXPECT_FALSE(root.isSubPathOf(root));
    EXPECT_TRUE(root.isSubPathOrSame(CQoCollPath(u"C:\\music")));
    EXPECT_FALSE(CQoCollPath(u"C:\\Musical\\x").isSubPathOf(root));
    EXPECT_TRUE(root.isParentOrChildOf(file));
    EXPECT_EQ(file.relativeTo(root).join(u"/"), CString(u"A/b.mp3"));
    EXPECT_TRUE(root.relativeTo(root).IsEmpty());
    EXPECT_EQ(file.getFileTitle(), CString(u"b"));
    EXPECT_EQ(file.getFileExt(), CString(u"mp3"));
    EXPECT_EQ(CQoCollPath(u"C:\\").getParent(), CQoCollPath(u"C:\\"));
    // Fewer components come first, whatever the names.
    EXPECT_LT(CQoCollPath(u"C:\\zzz").compare(CQoCollPath(u"C:\\a\\b")), 0);
    EXPECT_LT(CQoCollPath(u"C:\\zzz").compare(CQoCollPath(u"\\\\a\\a")), 0);
}

TEST(CollPath, TracksKeepTheirThreePlaces)
{
    const CQoCollPath base(u"\\\\lplugin:web\\x");
    const CQoCollPath track = CQoCollPath::makeTrack(base, u"", u"Album", u"Title", u"mp3");
    EXPECT_EQ(track.toString(), CString(u"\\\\lplugin:web\\ \\Album\\Title.mp3"));
    EXPECT_EQ(track.getFirst(), CString());
    EXPECT_EQ(track.getSecond(), CString(u"Album"));
}
