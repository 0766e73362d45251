#include "KVTagLib/TagFiles.h"

using namespace tagfiles;
using KVTagLib::CTags;

namespace
{
/// Python: p is the file; the functions work on the parts of its header.
constexpr const char* tools = R"(
import struct, sys
from mutagen.asf import ASF
p = sys.argv[1]
EXT, ECD = bytes.fromhex('b503bf5f2ea9cf118ee300c00c205365'), bytes.fromhex('40a4d0d207e3d21197f000a0c95ea850')
CD, META = bytes.fromhex('3326b2758e66cf11a6d900aa0062ce6c'), bytes.fromhex('eacbf8c5af5b77488467aa8c44fa4cca')
def objects():
    b = open(p, 'rb').read(); at = 30; found = []
    for i in range(struct.unpack_from('<I', b, 24)[0]):
        size = struct.unpack_from('<Q', b, at + 16)[0]
        found.append(b[at:at + size]); at += size
    return found, b[at:]
def put(found, sound, count=None):
    body = b''.join(found); b = open(p, 'rb').read()
    open(p, 'wb').write(b[:16] + struct.pack('<QI', 30 + len(body), count or len(found)) + b[28:30] + body + sound)
def text(t): return (t + '\0').encode('utf-16-le')
def attribute(name, value, kind=0):
    n, v = text(name), value if kind else text(value)
    return struct.pack('<H', len(n)) + n + struct.pack('<HH', kind, len(v)) + v
def add(*attributes):
    o, s = objects(); i = [x[:16] for x in o].index(ECD); n = struct.unpack_from('<H', o[i], 24)[0]
    c = struct.pack('<H', n + len(attributes)) + o[i][26:] + b''.join(attributes)
    o[i] = ECD + struct.pack('<Q', len(c) + 24) + c
    put(o, s)
def setSize(at, size):
    with open(p, 'r+b') as b: b.seek(at); b.write(struct.pack('<Q', size))
f = ASF(p)
f['Title'] = 'Old'; f['Author'] = ['A1', 'A2', 'A3']; f['WM/Genre'] = ['G1', 'G2']
f['WM/Composer'] = ['c1', 'c2', 'c3']; f['WM/Mood'] = ['m1', 'm2', 'm3']; f['WM/Lyrics'] = ['l1', 'l2']
f.save()
)";
constexpr const char* extensionFirst = R"(
o, s = objects(); put(sorted(o, key=lambda x: x[:16] != EXT), s)
)";
constexpr const char* extensionLast = R"(
o, s = objects(); put(sorted(o, key=lambda x: x[:16] == EXT), s)
)";
constexpr const char* allInOnePart = R"(
del f['WM/Genre']; f.save()
add(*[attribute('WM/Genre', 'G%d' % k) for k in (1, 2, 3)])
)";
constexpr const char* oneObjectTooMany = R"(
o, s = objects(); put(o, s, len(o) + 1)
)";
constexpr const char* cutInTheLastObject = R"(
o, s = objects(); put(sorted(o, key=lambda x: x[:16] == EXT), s); add(attribute('Last', 'x'))
o, s = objects(); put(sorted(o, key=lambda x: x[:16] == ECD), b'')
b = open(p, 'rb').read(); open(p, 'wb').write(b[:-4])
)";
constexpr const char* largerThanTheFile = R"(
setSize(16, 1 << 40)
)";

std::string make(const TempDir& folder, const char* layout)
{
    const std::string path = copySound(folder, "sound.wma");
    const std::string script = folder.write("make.py", std::string(tools) + layout);
    EXPECT_EQ(outputOf("/usr/bin/python3 '" + script + "' '" + path + "' 2>&1"), "");
    return path;
}

/// "G1|G2|…", with another first one.
std::string genres(const std::string& first, int count)
{
    std::string line = first;
    for (int i = 2; i <= count; ++i)
        line += "|G" + std::to_string(i);
    return line;
}

class AsfTagWrite : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!haveReferee())
            GTEST_SKIP() << "python3-mutagen is not installed";
    }

    TempDir folder;
};
} // namespace

TEST_F(AsfTagWrite, ValuesKeepTheirOrderWhereverThePartsStand)
{
    for (const char* layout : {extensionFirst, extensionLast, allInOnePart})
    {
        SCOPED_TRACE(layout);
        const std::string path = make(folder, layout);
        const std::string before = contentOf(path);
        const std::string seen = refereeOn(path);
        EXPECT_EQ(read(path).genre, "G1");

        EXPECT_EQ(write(path, title(u"A longer one")), "");
        EXPECT_EQ(write(path, title(u"New")), "");
        std::string expected = seen;
        expected.replace(expected.find("Title=Old"), 9, "Title=New");
        EXPECT_EQ(refereeOn(path), expected);

        EXPECT_EQ(write(path, title(u"Old")), "");
        EXPECT_TRUE(contentOf(path) == before) << "something beside the title changed";
    }
}

TEST_F(AsfTagWrite, OneOfSeveralValuesIsReplacedInItsPlace)
{
    const std::string path = make(folder, extensionFirst);
    CTags change;
    change.SetGenre(u"Rock");
    change.AddArtist(u"New", false);
    EXPECT_EQ(write(path, change), "");
    const std::string seen = refereeOn(path);
    EXPECT_TRUE(hasLine(seen, "WM/Genre=Rock|G2")) << seen;
    EXPECT_TRUE(hasLine(seen, "Author=New|A2|A3")) << seen;

    CTags removal;
    removal.SetGenre(u"");
    EXPECT_EQ(write(path, removal), "");
    EXPECT_EQ(refereeOn(path).find("WM/Genre"), std::string::npos);
}

TEST_F(AsfTagWrite, ValueTooLargeForItsPartStaysTheFirst)
{
    const std::string path = make(folder, extensionFirst);
    const std::string words(40'000, 'w');
    CTags change;
    change.SetLyrics(qo::fromUtf8(words));
    EXPECT_EQ(write(path, change), "");
    EXPECT_EQ(read(path).lyrics, words);
    EXPECT_TRUE(hasLine(refereeOn(path), "WM/Lyrics=" + words + "|l2"));
    EXPECT_EQ(write(path, title(u"New")), "");
    EXPECT_TRUE(hasLine(refereeOn(path), "WM/Lyrics=" + words + "|l2"));
}

TEST_F(AsfTagWrite, FileWithoutAnyTagGetsOne)
{
    // The plain description, the extended one and the library are all made anew.
    const std::string path =
        make(folder,
             "o, s = objects()\n"
             "put([x for x in o if x[:16] not in (EXT, ECD) and x[0] != 0x33], s)");
    EXPECT_EQ(read(path), Values());
    const Values values{
        .artist = "A", .album = "B", .title = "T", .genre = "Rock", .track = "3/12"};
    CTags tags = tagsOf(values);
    tags.AddArtist(u"A2", false);
    EXPECT_EQ(write(path, tags), "");
    EXPECT_EQ(read(path), values);
    EXPECT_TRUE(hasLine(refereeOn(path), "Author=A|A2")) << refereeOn(path);
}

TEST_F(AsfTagWrite, HeaderThatCannotBeTakenApartIsReadButNotWritten)
{
    for (const char* layout : {oneObjectTooMany, cutInTheLastObject, largerThanTheFile})
    {
        SCOPED_TRACE(layout);
        const std::string path = make(folder, layout);
        const std::string before = contentOf(path);
        EXPECT_EQ(read(path).title, "Old");
        EXPECT_EQ(read(path).genre, "G1");
        EXPECT_NE(write(path, title(u"New")), "");
        EXPECT_EQ(contentOf(path), before);
    }
}

TEST_F(AsfTagWrite, ThousandsOfMixedValuesKeepTheRightOnes)
{
    const std::string path = make(folder, R"(
del f['WM/Genre']; f.save()
add(*[attribute(n, 'G%d' % k) for k in range(1, 5001) for n in ('WM/Genre', 'Other')])
)");
    EXPECT_EQ(write(path, only(&CTags::SetGenre, u"Rock")), "");
    EXPECT_TRUE(hasLine(refereeOn(path), "WM/Genre=" + genres("Rock", 5000)));
    EXPECT_EQ(write(path, only(&CTags::SetGenre, u"")), "");
    const std::string seen = refereeOn(path);
    EXPECT_TRUE(hasLine(seen, "Other=" + genres("G1", 5000)));
    EXPECT_EQ(seen.find("WM/Genre"), std::string::npos);
}

TEST_F(AsfTagWrite, NumbersOfEveryTypeAreReplacedAndRemoved)
{
    const std::string path = make(folder, R"(
del f['WM/Genre']; f.save()
add(attribute('WM/TrackNumber', struct.pack('<Q', 3), 4), attribute('WM/TrackNumber', '4'),
    attribute('WM/Year', struct.pack('<H', 1999), 5), attribute('WM/Genre', struct.pack('<I', 1), 2))
)");
    EXPECT_EQ(read(path).track, "3");
    CTags change = only(&CTags::SetTrackNumber, u"5");
    change.SetYear(u"2001");
    change.SetGenre(u"Rock");
    EXPECT_EQ(write(path, change), "");
    const std::string seen = refereeOn(path);
    EXPECT_TRUE(hasLine(seen, "WM/TrackNumber=5") && hasLine(seen, "WM/Year=2001") &&
                hasLine(seen, "WM/Genre=Rock"))
        << seen;

    const std::string number = make(folder, "add(attribute('WM/Year', struct.pack('<Q', 9), 4))");
    EXPECT_EQ(write(number, only(&CTags::SetYear, u"")), "");
    EXPECT_EQ(refereeOn(number).find("WM/Year"), std::string::npos);
}

TEST_F(AsfTagWrite, TextTakesThePlaceOfANumberAndLeavesTheStreamItsOwn)
{
    const std::string path = make(folder, R"(
add(attribute('WM/Year', struct.pack('<I', 1989), 3))
n, v = text('WM/Year'), text('1990')
m = struct.pack('<HHHHHI', 1, 0, 1, len(n), 0, len(v)) + n + v
o, s = objects(); put(o + [META + struct.pack('<Q', 24 + len(m)) + m], s)
)");
    EXPECT_EQ(write(path, only(&CTags::SetYear, u"2001")), "");
    EXPECT_TRUE(hasLine(refereeOn(path), "WM/Year=2001|1990")) << refereeOn(path);
}

TEST_F(AsfTagWrite, NameWithFurtherZerosIsTheSameName)
{
    const std::string path =
        make(folder, "del f['WM/Genre']; f.save(); add(attribute('WM/Genre\\0', 'Old'))");
    EXPECT_EQ(read(path).genre, "Old");
    EXPECT_EQ(write(path, only(&CTags::SetGenre, u"Rock")), "");
    EXPECT_TRUE(hasLine(refereeOn(path), "WM/Genre=Rock")) << refereeOn(path);
}

TEST_F(AsfTagWrite, NamesInOtherCaseAreTheSameName)
{
    const std::string path = make(folder, R"(
del f['WM/Genre']; f.save()
add(attribute('TITLE', 'Old'), attribute('wm/genre', 'G1'), attribute('WM/GENRE', 'Gone'), attribute('wm/genre', 'G2'))
)");
    EXPECT_EQ(read(path).genre, "G1");
    CTags change = title(u"New");
    change.SetGenre(u"Rock");
    EXPECT_EQ(write(path, change), "");
    const std::string seen = refereeOn(path);
    EXPECT_TRUE(hasLine(seen, "wm/genre=Rock|G2")) << seen;
    EXPECT_EQ(seen.find("Old") + 1 + seen.find("Gone") + 1, 0U) << seen;
}

TEST_F(AsfTagWrite, LastOfTwoDescriptionsCounts)
{
    const std::string path = make(folder, R"(
o, s = objects(); d = [x for x in o if x[:16] == CD][0]
put(o + [d.replace(text('Old'), text('Two'))], s)
)");
    EXPECT_EQ(read(path).title, "Two");
    EXPECT_EQ(write(path, title(u"New")), "");
    EXPECT_EQ(read(path).title, "New");
}

TEST_F(AsfTagWrite, SizeOfTheFileIsKeptRight)
{
    const std::string path = make(folder, R"(
b = open(p, 'rb').read()
setSize(b.index(bytes.fromhex('a1dcab8c47a9cf118ee400c00c205365')) + 40, len(b))
)");
    const std::string before = contentOf(path);
    EXPECT_EQ(write(path, title(u"A longer one")), "");
    const std::string after = contentOf(path);
    ASSERT_NE(after.size(), before.size());
    const auto size = [](const std::string& content)
    {
        const auto length = static_cast<std::uint64_t>(content.size());
        return std::string(reinterpret_cast<const char*>(&length), sizeof length);
    };
    EXPECT_NE(after.find(size(after)), std::string::npos);
    EXPECT_EQ(after.find(size(before)), std::string::npos);
}
