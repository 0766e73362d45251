#include "KVTagLib/TagFiles.h"

using namespace tagfiles;
using KVTagLib::CTags;

namespace
{
/// One rich tag, made by another tag library; a change to one field; and the only lines in which
/// that library's view of the file may differ afterwards.
struct PreservedCase
{
    const char* file;
    const char* make; ///< Python; the file's path is in p
    CTags change;
    std::vector<std::string> gone;
    std::vector<std::string> come;
};

constexpr const char* id3Frames = R"(
from mutagen.id3 import ID3, Frames
globals().update(Frames)
t = ID3()
t.add(TPE1(3, ['First', 'Second'])); t.add(TIT2(3, 'Old')); t.add(TALB(3, 'Album'))
t.add(TPE2(3, 'Album Artist')); t.add(TPOS(3, '1/2')); t.add(TRCK(3, '3/12')); t.add(TCON(3, 'Rock'))
t.add(COMM(3, 'eng', 'note', 'A comment')); t.add(TXXX(3, 'replaygain_track_gain', '-7.5 dB'))
t.add(TXXX(3, 'MusicBrainz Album Id', 'abc-def')); t.add(PRIV('owner', b'\x00\x01\xff'))
t.add(POPM('me@here', 200, 7)); t.add(UFID('http://musicbrainz.org', b'id'))
t.add(USLT(3, 'eng', '', 'Words')); t.add(USLT(3, 'fra', 'other', 'Mots'))
t.add(APIC(3, 'image/png', 4, 'back', open(D + '/blue.png', 'rb').read()))
t.add(APIC(3, 'image/jpeg', 3, 'front', open(D + '/red.jpg', 'rb').read()))
)";

constexpr const char* id3v24 = R"(
t.add(TDRC(3, '2001-05-03')); t.add(RVA2('track', 1, -7.5, 0.9)); t.add(TMOO(3, 'Calm'))
t.add(TSOP(3, 'First, The')); t.add(TDTG(3, '2020-01-01')); t.add(TDRL(3, '2001-06-01'))
t.save(p, v2_version=4)
)";
constexpr const char* id3v23 = R"(
t.add(TYER(3, '2001')); t.add(TDAT(3, '0305')); t.add(TSOP(3, 'First, The')); t.add(TRDA(3, 'May'))
t.add(RVA2('track', 1, -7.5, 0.9)); t.add(TMOO(3, 'Calm')); t.add(TSIZ(3, '2141'))
t.save(p, v2_version=3, v23_sep=None)
)";
constexpr const char* withOldTags = R"(
from mutagen.apev2 import APEv2
t.save(p, v2_version=4, v1=2)
a = APEv2(); a['Artist'] = ['First', 'Second']; a['Title'] = 'Old'; a['MP3GAIN_MINMAX'] = '1,2'; a.save(p)
)";
constexpr const char* preservedXiph = R"(
import mutagen
f = mutagen.File(p)
if f.tags is None: f.add_tags()
f['artist'] = ['First', 'Second']; f['title'] = 'Old'; f['album'] = 'Album'; f['genre'] = ['Rock', 'Pop']
f['date'] = '2001-05-03'; f['tracknumber'] = '3'; f['tracktotal'] = '12'; f['discnumber'] = '1'
f['albumartist'] = 'Album Artist'; f['comment'] = ['A comment', 'Another']
f['replaygain_track_gain'] = '-7.5 dB'; f['musicbrainz_albumid'] = 'abc-def'; f['lyrics'] = 'Words'
f.save()
)";
constexpr const char* apeTag = R"(
from mutagen.apev2 import APEv2, APEValue, BINARY, EXTERNAL
a = APEv2(); a['Artist'] = ['First', 'Second']; a['Title'] = 'Old'; a['Album'] = 'Album'
a['Track'] = '3/12'; a['Disc'] = '1'; a['Year'] = '2001-05-03'; a['replaygain_track_gain'] = '-7.5 dB'
a['Blob'] = APEValue(b'\x00\x01\xff', BINARY); a['Link'] = APEValue('http://x', EXTERNAL); a.save(p)
)";
constexpr const char* preservedMp4 = R"(
from mutagen.mp4 import MP4, MP4Cover
f = MP4(p)
f['\xa9ART'] = ['First', 'Second']; f['\xa9nam'] = 'Old'; f['\xa9alb'] = 'Album'; f['\xa9day'] = '2001-05-03T07:00:00Z'
f['trkn'] = [(3, 12)]; f['disk'] = [(1, 2)]; f['aART'] = 'Album Artist'; f['cpil'] = True; f['tmpo'] = [120]
f['----:com.apple.iTunes:replaygain_track_gain'] = b'-7.5 dB'; f['\xa9cmt'] = 'A comment'; f['plID'] = [77]
f['covr'] = [MP4Cover(open(D + '/red.jpg', 'rb').read(), 13), MP4Cover(open(D + '/blue.png', 'rb').read(), 14)]
f['\xa9grp'] = 'xxxx'
f.save()
b = open(p, 'rb').read()
i = b.index(b'\xa9grp')
b = b[:i] + b'zzzz' + b[i + 4:i + 12] + b'\x00\x00\x00\x15' + b[i + 16:]
open(p, 'wb').write(b)
)";
constexpr const char* preservedAsf = R"(
from mutagen.asf import ASF, ASFDWordAttribute, ASFBoolAttribute, ASFByteArrayAttribute, ASFQWordAttribute
f = ASF(p)
f['Author'] = ['First', 'Second']; f['Title'] = 'Old'; f['WM/AlbumTitle'] = 'Album'; f['WM/Year'] = '2001-05-03'
f['WM/TrackNumber'] = [ASFDWordAttribute(3)]; f['WM/PartOfSet'] = '1/2'; f['WM/AlbumArtist'] = 'Album Artist'
f['replaygain_track_gain'] = '-7.5 dB'; f['WM/IsCompilation'] = [ASFBoolAttribute(True)]
f['MCDI'] = [ASFByteArrayAttribute(b'\x00\x01')]; f['Big'] = [ASFQWordAttribute(1 << 40)]
f['Description'] = 'A comment'; f['Copyright'] = 'Us'
f.save()
)";
constexpr const char* wav = R"(
from mutagen.wave import WAVE
f = WAVE(p); f.add_tags()
from mutagen.id3 import Frames
globals().update(Frames)
f.tags.add(TIT2(3, 'Old')); f.tags.add(TPE1(3, 'First')); f.tags.add(TXXX(3, 'mood', 'Calm')); f.tags.add(TRCK(3, '3/12'))
f.save()
)";

CTags artist(const char16_t* text)
{
    CTags tags;
    tags.AddArtist(text, false);
    return tags;
}

CTags year(const char16_t* text)
{
    return only(&CTags::SetYear, text);
}

CTags track(const char16_t* text)
{
    return only(&CTags::SetTrackNumber, text);
}

CTags cover()
{
    return withPicture({}, "green.jpg");
}

std::vector<PreservedCase> id3Cases()
{
    static const std::string v24 = std::string(id3Frames) + id3v24;
    static const std::string v23 = std::string(id3Frames) + id3v23;
    static const std::string old = std::string(id3Frames) + withOldTags;
    const char* const m4 = v24.c_str();
    const char* const m3 = v23.c_str();
    const char* const mp3 = "sound.mp3";
    const CTags lyrics = only(&CTags::SetLyrics, u"New");
    return {
        {mp3, m4, title(u"New"), {"TIT2=Old"}, {"TIT2=New"}},
        {mp3, m4, artist(u"New"), {"TPE1=First|Second"}, {"TPE1=New|Second"}},
        {mp3, m4, artist(u""), {"TPE1=First|Second"}, {}},
        {mp3, m4, year(u"1999"), {"TDRC=2001-05-03"}, {"TDRC=1999"}},
        {mp3, m4, track(u"4"), {"TRCK=3/12"}, {"TRCK=4/12"}},
        {mp3, m4, track(u"4/9"), {"TRCK=3/12"}, {"TRCK=4/9"}},
        {mp3, m4, lyrics, {"USLT::eng=Words"}, {"USLT::eng=New"}},
        {mp3, m4, cover(), {"picture=3 image/jpeg 377"}, {"picture=3 image/jpeg 617"}},
        {mp3, m3, title(u"Ñew"), {"TIT2=Old"}, {"TIT2=Ñew"}},
        {mp3, m3, year(u"1999"), {"TDAT=0305", "TYER=2001"}, {"TYER=1999"}},
        {mp3, m3, year(u"1999-12-31"), {"TDAT=0305", "TYER=2001"}, {"TDAT=3112", "TYER=1999"}},
        {mp3,
         old.c_str(),
         title(u"New"),
         {"APE Title=Old", "TIT2=Old"},
         {"APE Title=New", "TIT2=New"}},
    };
}

std::vector<PreservedCase> otherCases()
{
    const char* const flac = "sound.flac";
    const char* const m4a = "sound.m4a";
    const CTags genre = only(&CTags::SetGenre, u"Jazz");
    std::vector<PreservedCase> cases = {
        {flac, preservedXiph, artist(u"New"), {"artist=First|Second"}, {"artist=New|Second"}},
        {flac, preservedXiph, genre, {"genre=Rock|Pop"}, {"genre=Jazz|Pop"}},
        {flac,
         preservedXiph,
         track(u"4/9"),
         {"tracknumber=3", "tracktotal=12"},
         {"tracknumber=4", "tracktotal=9"}},
        {"sound.wv", apeTag, track(u"4"), {"Track=3/12"}, {"Track=4/12"}},
        {m4a,
         preservedMp4,
         title(u"A much longer title"),
         {"©nam=Old"},
         {"©nam=A much longer title"}},
        {"alac.m4a", preservedMp4, artist(u"New"), {"©ART=First|Second"}, {"©ART=New|Second"}},
        {m4a, preservedMp4, track(u"4"), {"trkn=3/12"}, {"trkn=4/12"}},
        {m4a, preservedMp4, cover(), {"picture=13 377"}, {"picture=13 617"}},
        {"sound.wma", preservedAsf, title(u"New"), {"Title=Old"}, {"Title=New"}},
        {"sound.wma", preservedAsf, artist(u"New"), {"Author=First|Second"}, {"Author=New|Second"}},
        {"sound.wav", wav, title(u"New"), {"TIT2=Old"}, {"TIT2=New"}},
    };
    for (const char* file : {"sound.flac", "sound.ogg", "sound.oga", "sound.opus", "sound.spx"})
        cases.push_back({file, preservedXiph, title(u"New"), {"title=Old"}, {"title=New"}});
    for (const char* file : {"sound.wv", "sound.mpc", "sound.ape"})
        cases.push_back({file, apeTag, title(u"New"), {"Title=Old"}, {"Title=New"}});
    return cases;
}
} // namespace

TEST(TagPreservation, OnlyTheChangedFieldDiffersForAnotherTagLibrary)
{
    if (!haveReferee())
        GTEST_SKIP() << "python3-mutagen is not installed";
    const TempDir folder;
    std::vector<PreservedCase> cases = id3Cases();
    std::ranges::move(otherCases(), std::back_inserter(cases));
    for (const PreservedCase& row : cases)
    {
        SCOPED_TRACE(row.file + (" " + row.gone.front()));
        const std::string path = copySound(folder, row.file);
        const std::string script = folder.write(
            "make.py",
            "import sys\np = sys.argv[1]\nD = '" QO_TEST_DATA "/sounds'\n" + std::string(row.make));
        EXPECT_EQ(outputOf("/usr/bin/python3 '" + script + "' '" + path + "' 2>&1"), "");
        const auto before = sortedLines(refereeOn(path));
        EXPECT_GT(before.size(), 4U);
        const std::string checksum = haveDecoder() ? soundChecksum(path) : "";

        EXPECT_EQ(write(path, row.change), "");
        const auto after = sortedLines(refereeOn(path));
        EXPECT_EQ(difference(before, after), row.gone);
        EXPECT_EQ(difference(after, before), row.come);
        EXPECT_EQ(haveDecoder() ? soundChecksum(path) : "", checksum);
    }
}
