#include "Reorganize/SeperateRule.h"

#include "Logical/LTFiles.h"
#include "QoColl/Db/VelmoraFileParamsUtils.h"
#include "Reorganize/RuleTrees.h"

#include <memory>

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
    struct Case
    {
        const CSeperateRule& rule;
        int index;
        int type;
        const char16_t* name;
    };
    const Case cases[] = {
        {artist, 0, 0, u"MoreEqualTracks"},
        {artist, 1, 1, u"LessTracks"},
        {artist, 2, 2, u"NoArtist"},
        {artist, 3, -1, u""},
        {album, 0, 1, u"MoreEqualTracks"},
        {album, 1, 2, u"LessTracks"},
        {album, 2, 3, u"NoAlbum"},
        {album, -1, -1, u""},
        {jingle, 0, 0, u"NotJingle"},
        {jingle, 1, 1, u"Jingle"},
        {jingle, 2, -1, u"NoArtist"},
        {jingle, 2, -1, u"jingle"},
    };
    for (const Case& each : cases)
    {
        EXPECT_EQ(each.rule.getOutputType(each.index), each.type);
        EXPECT_EQ(each.rule.getOutputType(CString(each.name)), each.type) << each.rule.m_type;
        const CString name = each.rule.getOutputName(each.type);
        EXPECT_EQ(name, each.type == -1 ? u"" : each.name);
    }
    EXPECT_EQ(artist.getOutputCount() + album.getOutputCount(), 6);
    EXPECT_EQ(jingle.getOutputCount(), 2);
}

TEST_F(SeperateRule, RulesShowThemselvesAndTheirCopies)
{
    const CArtistTracksSeperateRule artist(-3);
    const CAlbumTracksSeperateRule album(5);
    const CJingleSeperateRule jingle;
    const CSeperateRule* const rules[] = {&artist, &album, &jingle};
    const char16_t* const texts[] = {u"m_trackLimit=-3, ", u"m_trackLimit=5, ", u""};
    for (int i = 0; i < CSeperateRule::getTypesCount(); ++i)
    {
        const std::unique_ptr<CSeperateRule> copy(rules[i]->clone());
        EXPECT_EQ(copy->m_type, CSeperateRule::getType(i));
        EXPECT_EQ(copy->toString(false), texts[i]);
    }

    CSubdirRule folder;
    CReorganizeUtils::parseAttributesString(u"a{time.us}", &folder.m_pattern);
    EXPECT_EQ(folder.toString(false), u"keepOriginal=1, pattern=aTimeStartHMUS");
    CRenameRule name(CRenameRule::Lyrics);
    name.m_pattern.copyFrom(folder.m_pattern);
    const std::unique_ptr<CRenameRule> copy(name.clone());
    EXPECT_EQ(copy->toString(false),
              u"type = Lyrics, keepOriginal=1, keepOriginalIfAttribEmpty=0, "
              u"pattern=aTimeStartHMUS");
    EXPECT_EQ(CRenameRule::getType(u"Picture"), CRenameRule::Picture);
    EXPECT_EQ(CRenameRule::getType(u"picture"), 0);
    EXPECT_EQ(CRenameRule::getTypeName(CRenameRule::InvalidType), u"InvalidType");
    EXPECT_EQ(CRenameRule::getAllAllowedTypes(), 7);
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
