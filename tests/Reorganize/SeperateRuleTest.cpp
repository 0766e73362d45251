#include "Reorganize/SeperateRule.h"

#include "Logical/LTFiles.h"
#include "QoColl/Db/Records/VelmoraFileParamsUtils.h"
#include "Reorganize/RuleTrees.h"
#include "support/Words.h"

#include <tuple>

namespace
{
using SeperateRule = LTTree;

CString outputFor(const CSeperateRule& rule, const boost::shared_ptr<CHDFile>& file)
{
    return rule.getOutputName(rule.getMatchingOutputType(file));
}

SimpleMusicTag tagOf(const char16_t* artist, const char16_t* album)
{
    SimpleMusicTag tag;
    tag.artist = artist;
    tag.album = album;
    return tag;
}
} // namespace

TEST_F(SeperateRule, OutputsHaveNumbersAndNames)
{
    const CArtistTracksSeperateRule artist(-3);
    const CAlbumTracksSeperateRule album(5);
    const CJingleSeperateRule jingle;
    const std::tuple<const CSeperateRule&, int, const char*> cases[] = {
        {artist, 0, "MoreEqualTracks LessTracks NoArtist"},
        {album, 1, "MoreEqualTracks LessTracks NoAlbum"},
        {jingle, 0, "NotJingle Jingle"}};
    for (const auto& [rule, first, names] : cases)
    {
        int index = 0;
        for (const std::string& name : wordsOf(names))
        {
            EXPECT_EQ(rule.getOutputType(index), first + index) << name;
            EXPECT_EQ(rule.getOutputType(qo::fromUtf8(name)), first + index) << name;
            EXPECT_EQ(rule.getOutputName(first + index), qo::fromUtf8(name));
            ++index;
        }
        EXPECT_EQ(rule.getOutputCount(), index);
        for (const int none : {-1, index})
            EXPECT_EQ(rule.getOutputType(none), -1);
        for (const char16_t* none : {u"", u"jingle", u"Artist"})
            EXPECT_EQ(rule.getOutputType(CString(none)), -1);
        EXPECT_EQ(rule.getOutputName(-1), u"");
    }
}

TEST_F(SeperateRule, FilesGoByTheTracksOfTheirArtistAndAlbum)
{
    for (int i = 0; i < 5; ++i)
        addMusic(tagOf(u"artist", i < 4 ? u"four" : u"one"));
    const Music nameless = addMusic(tagOf(u"", u""));
    const CArtistTracksSeperateRule artist(5);
    const CAlbumTracksSeperateRule album(4);
    EXPECT_EQ(outputFor(artist, musics[0]), u"MoreEqualTracks");
    EXPECT_EQ(outputFor(CArtistTracksSeperateRule(6), musics[0]), u"LessTracks");
    EXPECT_EQ(outputFor(album, musics[0]), u"MoreEqualTracks");
    EXPECT_EQ(outputFor(album, musics[4]), u"LessTracks");
    EXPECT_EQ(outputFor(CAlbumTracksSeperateRule(0), nameless), u"NoAlbum");
    EXPECT_EQ(outputFor(CArtistTracksSeperateRule(0), nameless), u"NoArtist");
    EXPECT_EQ(outputFor(artist, addPicture(tagOf(u"artist", u"four"))), u"MoreEqualTracks");
    EXPECT_EQ(outputFor(album, makeTaggedFile(u"C:\\m\\x.txt", {})), u"NoAlbum");

    IQorganizer::TagInfo tag;
    tag.artist = u"artist";
    tag.album = u"four";
    EXPECT_EQ(artist.getMatchingOutputType(tag), CArtistTracksSeperateRule::NoArtist);
    EXPECT_EQ(album.getMatchingOutputType(tag), CAlbumTracksSeperateRule::NoAlbum);
}

TEST_F(SeperateRule, JinglesGoByTheirParametersOrTheirTag)
{
    const CJingleSeperateRule rule;
    const auto file = makeTaggedFile(u"C:\\m\\a.mp3", {});
    QorganizerDef::VelmoraFileParams params;
    params.source = IPostProcessingQueue::sourceRadioRecording;
    for (const bool isJingle : {false, true})
    {
        EXPECT_EQ(outputFor(rule, file), u"NotJingle");
        params.isJingle = isJingle;
        file->getDbItem()->params = CVelmoraFileParamsUtils::ToDbParam(params);
        IQorganizer::TagInfo tag;
        tag.isJingle = isJingle;
        EXPECT_EQ(rule.getMatchingOutputType(tag), isJingle);
    }
    EXPECT_EQ(outputFor(rule, file), u"Jingle");
}
