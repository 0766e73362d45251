#include "KVTagLib/TagFiles.h"
#include "support/Contains.h"

using namespace tagfiles;

namespace
{
/// A file in which names stand more than once, made by another tag library, and the prefix of the
/// only line in which that library's view of it may differ after a change of the title.
struct Case
{
    const char* file;
    const char* make; ///< Python; the file's path is in p
    const char* title;
};

constexpr const char* id3 = R"(
from mutagen.id3 import ID3, Frames
globals().update(Frames)
t = ID3(); t.add(TIT2(3, 'Old')); t.add(TPE1(3, ['A3', 'A1', 'A2'])); t.add(TCON(3, ['G2', 'G1']))
t.add(TCOM(3, ['c3', 'c1', 'c2'])); t.add(TXXX(3, 'MOOD', ['m2', 'm1', 'm3']))
for n, w in (('z', 'one'), ('a', 'two'), ('m', 'three')): t.add(COMM(3, 'eng', n, w)); t.add(TXXX(3, n, w))
t.save(p, v2_version=4)
)";
constexpr const char* id3Chunk = R"(
import mutagen
from mutagen.id3 import Frames
globals().update(Frames)
f = mutagen.File(p); f.add_tags(); t = f.tags
t.add(TIT2(3, 'Old')); t.add(TPE1(3, ['A3', 'A1', 'A2'])); t.add(TCON(3, ['G2', 'G1'])); t.add(TCOM(3, ['c2', 'c1']))
f.save()
)";
constexpr const char* xiph = R"(
import mutagen
f = mutagen.File(p)
if f.tags is None: f.add_tags()
f['title'] = 'Old'; f['artist'] = ['A3', 'A1', 'A2']; f['genre'] = ['G2', 'G1']; f['composer'] = ['c3', 'c1', 'c2']
f['performer'] = ['p2', 'p3', 'p1']
f.save()
)";
constexpr const char* mp4 = R"(
from mutagen.mp4 import MP4
f = MP4(p)
f['\xa9nam'] = 'Old'; f['\xa9ART'] = ['A3', 'A1', 'A2']; f['\xa9gen'] = ['G2', 'G1']; f['\xa9wrt'] = ['c3', 'c1', 'c2']
f['----:com.apple.iTunes:MOOD'] = [b'm2', b'm1', b'm3']; f['aART'] = ['b2', 'b1']
f.save()
)";
constexpr const char* ape = R"(
from mutagen.apev2 import APEv2
a = APEv2(); a['Title'] = 'Old'; a['Artist'] = ['A3', 'A1', 'A2']; a['Genre'] = ['G2', 'G1']
a['Composer'] = ['c3', 'c1', 'c2']; a['Mood'] = ['m2', 'm1']; a.save(p)
)";
constexpr const char* asf = R"(
from mutagen.asf import ASF
f = ASF(p)
f['Title'] = 'Old'; f['Author'] = ['A3', 'A1', 'A2']; f['WM/Genre'] = ['G2', 'G1']
f['WM/Composer'] = ['c3', 'c1', 'c2']; f['WM/AlbumArtist'] = ['b2', 'b1']; f['WM/Mood'] = ['m2', 'm1', 'm3']
f.save()
)";

constexpr Case cases[] = {
    {"sound.mp3", id3, "TIT2="},
    {"sound.tta", id3, "TIT2="},
    {"sound.wav", id3Chunk, "TIT2="},
    {"sound.aiff", id3Chunk, "TIT2="},
    {"sound.flac", xiph, "title="},
    {"sound.ogg", xiph, "title="},
    {"sound.oga", xiph, "title="},
    {"sound.opus", xiph, "title="},
    {"sound.spx", xiph, "title="},
    {"sound.m4a", mp4, "\u00a9nam="},
    {"sound.ape", ape, "Title="},
    {"sound.wv", ape, "Title="},
    {"sound.mpc", ape, "Title="},
    {"sound.wma", asf, "Title="},
};

std::string valuesIn(const std::string& path, KVTagLib::Field field)
{
    KVTagLib::CTags tags(CString(), KVTagLib::TagExtent::everything);
    EXPECT_TRUE(readInto(path, tags));
    std::string all;
    for (const CString& value : tags.GetValues(field))
        all += (all.empty() ? "" : "|") + qo::toUtf8(value);
    return all;
}

std::string replaced(std::string text, const std::string& old, const std::string& with)
{
    const std::size_t at = text.find(old);
    return at == std::string::npos ? "no " + old : text.replace(at, old.size(), with);
}
} // namespace

TEST(TagOrder, RepeatedValuesAreReadAndStandAsBeforeAfterTwoWrites)
{
    if (!haveReferee())
        GTEST_SKIP() << "python3-mutagen is not installed";
    const TempDir folder;
    for (const Case& row : cases)
    {
        SCOPED_TRACE(row.file);
        const std::string path = copySound(folder, row.file);
        const std::string script =
            folder.write("make.py", "import sys\np = sys.argv[1]\n" + std::string(row.make));
        EXPECT_EQ(outputOf("/usr/bin/python3 '" + script + "' '" + path + "' 2>&1"), "");
        const std::string before = refereeOn(path);
        EXPECT_TRUE(contains(before, "A3|A1|A2"));
        EXPECT_EQ(valuesIn(path, KVTagLib::Field::artist), "A3|A1|A2");
        EXPECT_EQ(valuesIn(path, KVTagLib::Field::genre), "G2|G1");

        for (const char16_t* text : {u"A longer title", u"New"})
            EXPECT_EQ(write(path, title(text)), "");
        const std::string line = row.title;
        EXPECT_EQ(refereeOn(path), replaced(before, line + "Old", line + "New"));
    }
}
