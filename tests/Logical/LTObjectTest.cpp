#include "Logical/LTObject.h"

#include "LTFiles.h"
#include "Logical/LTAlbum.h"
#include "Logical/LTArtist.h"
#include "Logical/LTGenre.h"
#include "Logical/LTLyrics.h"
#include "Logical/LTPicture.h"
#include "Logical/LTTrack.h"
#include "support/LogCapture.h"
#include "support/Print.h"

#include <string>

namespace
{
template <class X, class SET, class GET>
void expectClearedFirst(const boost::shared_ptr<X>& first,
                        const boost::shared_ptr<X>& second,
                        SET set,
                        GET get)
{
    set(first);
    LogCapture log;
    set(first);
    EXPECT_TRUE(log.lines().empty()) << log.all();
    set(second);
    EXPECT_EQ(get(), first);
    CString line;
    line.Format(u"setLTMember assertion failed: pMember=%p, pValue=%p",
                static_cast<const void*>(first.get()),
                static_cast<const void*>(second.get()));
    EXPECT_EQ(log.all(), "10: " + qo::toUtf8(line) + "\n");
    set(boost::shared_ptr<X>());
    EXPECT_FALSE(get());
    set(second);
    EXPECT_EQ(get(), second);
}
} // namespace

TEST(LTObjectType, NamesOneTypeButNoCombination)
{
    const char16_t* names[] = {u"Album", u"Artist", u"Genre", u"Lyrics", u"Picture", u"Track"};
    ASSERT_EQ(CLTObjectType::getTypesCount(), 6);
    for (int i = 0; i < 6; ++i)
    {
        EXPECT_EQ(CLTObjectType::getType(i), 1 << i);
        EXPECT_EQ(CString(CLTObjectType::getTypeName(i)), names[i]);
        EXPECT_EQ(CString(CLTObjectType::getTypeName(CLTObjectType::getType(i))), names[i]);
    }
    for (const int value : {0, 3, 64})
        EXPECT_EQ(CLTObjectType::getTypeName(static_cast<CLTObjectType::EType>(value)), nullptr);
}

TEST(LTObject, TextsOfEachClass)
{
    CLTTrack track(u"Waterloo");
    track.setNumberAndYear(u"3/12", u"1974");
    EXPECT_EQ(track.toString(false), u"Tr:Waterloo:3/12:1974");
    EXPECT_EQ(CLTTrack(CString()).toString(true), u"Tr:[unknown]::");
    EXPECT_EQ(CLTAlbum(u"100%s").toString(true), u"Al:100%s");
    EXPECT_EQ(CLTArtist(CString()).toString(true), u"Ar:[unknown]");
    EXPECT_EQ(CLTGenre(u"Pop").toString(false), u"Ge:Pop");
    EXPECT_EQ(CLTLyrics().toString(false), u"Lyr");
    EXPECT_EQ(CLTLyrics().getDisplayName(), u"[unknown]");
    EXPECT_EQ(CLTPicture().toString(true), u"Pic");
    EXPECT_EQ(track.getObjectType(), CQoCheckObject::OT_Logical);
    EXPECT_TRUE(track.isNotChecked());
}

TEST(LTObject, LinkIsClearedBeforeItIsSetAnew)
{
    CLTAlbum album(u"X");
    expectClearedFirst(
        boost::make_shared<CLTArtist>(u"A"),
        boost::make_shared<CLTArtist>(u"B"),
        [&](const auto& artist) { album.setArtist(artist); },
        [&] { return album.getArtist(); });
    CLTTrack track(u"T");
    expectClearedFirst(
        boost::make_shared<CLTLyrics>(),
        boost::make_shared<CLTLyrics>(),
        [&](const auto& lyrics) { track.setLyrics(lyrics); },
        [&] { return track.getLyrics(); });
}

TEST(LTObject, WhatKeepsAnObjectInUse)
{
    const auto track = boost::make_shared<CLTTrack>(u"T");
    const auto lyrics = boost::make_shared<CLTLyrics>();
    EXPECT_FALSE(track->isUsed());
    track->setLyrics(lyrics);
    EXPECT_TRUE(track->isUsed());
    track->setLyrics({});
    EXPECT_FALSE(track->isUsed());

    const auto artist = boost::make_shared<CLTArtist>(u"A");
    artist->addAlbum(boost::make_shared<CLTAlbum>(u"X"));
    EXPECT_FALSE(artist->isUsed());
    artist->addPicture(boost::make_shared<CLTPicture>());
    EXPECT_TRUE(artist->isUsed());

    CLTAlbum album(u"X");
    EXPECT_FALSE(album.isUsed());
    album.addLyrics(lyrics);
    album.addLyrics(lyrics);
    EXPECT_EQ(album.getLyrics().GetSize(), 1);
    EXPECT_TRUE(album.isUsed());
    album.removeLyrics(lyrics);
    album.removeLyrics(lyrics);
    EXPECT_FALSE(album.isUsed());
}

TEST(LTObject, ListsHoldATrackOnceWhateverTheOrderOfChanges)
{
    // Two artists are forced to share tracks, so that the stamps of one are those of the other.
    CLTArtist a(u"A");
    CLTArtist b(u"B");
    CLTGenre genre(u"G");
    std::vector<boost::shared_ptr<CLTTrack>> tracks;
    for (int i = 0; i < 50; ++i)
    {
        tracks.push_back(boost::make_shared<CLTTrack>(u"T"));
        a.addTrack(tracks.back());
        genre.addTrack(tracks.back());
        if (i % 3 == 0)
            b.addTrack(tracks.back());
    }
    for (int i = 49; i >= 0; i -= 2)
    {
        b.removeTrack(tracks[i]);
        a.addTrack(tracks[i]);
        genre.addTrack(tracks[i]);
    }
    EXPECT_EQ(a.getTracks().GetSize(), 50);
    EXPECT_EQ(genre.getTracks().GetSize(), 50);
    EXPECT_EQ(b.getTracks().GetSize(), 9);
    for (const int i : {20, 3, 48, 0, 49, 24})
    {
        a.removeTrack(tracks[i]);
        genre.removeTrack(tracks[i]);
        EXPECT_EQ(a.getTracks().find(tracks[i]), -1);
        EXPECT_EQ(genre.getTracks().find(tracks[i]), -1);
    }
    EXPECT_EQ(a.getTracks().GetSize(), 44);
    EXPECT_EQ(a.getTracks()[0], tracks[1]);
    EXPECT_EQ(genre.getTracks().GetSize(), 44);
}
