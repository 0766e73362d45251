#include "Physical/HDMusicFile.h"

#include "Logical/LTAlbum.h"
#include "Logical/LTArtist.h"
#include "Logical/LTGenre.h"
#include "Logical/LTLyrics.h"
#include "Logical/LTPicture.h"
#include "Logical/LTTrack.h"
#include "Physical/DirLTNames.h"
#include "Physical/HDPictureFile.h"
#include "Physical/HDTextFile.h"
#include "support/Print.h"
#include "support/Records.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

namespace
{
template <class FILE>
boost::shared_ptr<FILE> makeFile(const CString& path)
{
    return boost::dynamic_pointer_cast<FILE>(fileOf(path));
}

/// A track with everything, and files of each kind. Links are set at the ends that are read only,
/// so nothing holds itself.
class HDFileLinks : public testing::Test
{
protected:
    boost::shared_ptr<CLTArtist> artist = boost::make_shared<CLTArtist>(u"Artist");
    boost::shared_ptr<CLTArtist> painter = boost::make_shared<CLTArtist>(u"Painter");
    boost::shared_ptr<CLTAlbum> album = boost::make_shared<CLTAlbum>(u"Album");
    boost::shared_ptr<CLTGenre> genre = boost::make_shared<CLTGenre>(u"Genre");
    boost::shared_ptr<CLTTrack> track = boost::make_shared<CLTTrack>(CString());
    boost::shared_ptr<CLTLyrics> lyrics = boost::make_shared<CLTLyrics>();
    boost::shared_ptr<CLTPicture> picture = boost::make_shared<CLTPicture>();
    boost::shared_ptr<CHDMusicFile> music = makeFile<CHDMusicFile>(u"C:\\a.mp3");
    boost::shared_ptr<CHDPictureFile> image = makeFile<CHDPictureFile>(u"C:\\a.png");
    boost::shared_ptr<CHDTextFile> text = makeFile<CHDTextFile>(u"C:\\a.txt");

    void SetUp() override
    {
        album->setArtist(artist);
        track->setAlbum(album);
        track->setArtist(artist);
        track->setGenre(genre);
        lyrics->setTrack(track);
        lyrics->setAlbum(album);
        picture->setAlbum(album);
        picture->setArtist(painter);
    }

    struct Row
    {
        CLTObjectType::EType type;
        boost::shared_ptr<CLTObject> object;
        bool isAnswered = true; ///< by hasLTAssoc
    };
    static void expectAssocs(const CHDFile& file, const std::vector<Row>& rows)
    {
        for (const Row& row : rows)
        {
            SCOPED_TRACE(row.type);
            EXPECT_EQ(file.getLTAssoc(row.type), row.object);
            EXPECT_EQ(file.hasLTAssoc(row.object), row.object && row.isAnswered);
        }
    }
};
} // namespace

TEST_F(HDFileLinks, MusicReadsThroughItsTrack)
{
    music->setLyrics(lyrics);
    music->setPicture(picture);
    EXPECT_FALSE(music->getLTAssoc(CLTObjectType::Lyrics)) << "without a track there is nothing";
    music->setTrack(track);
    expectAssocs(*music,
                 {{CLTObjectType::Album, album},
                  {CLTObjectType::Artist, artist},
                  {CLTObjectType::Genre, genre},
                  {CLTObjectType::Lyrics, lyrics, false},
                  {CLTObjectType::Picture, picture, false},
                  {CLTObjectType::Track, track}});
    EXPECT_FALSE(music->hasLTAssoc(painter));
    CDirLTNames names;
    music->getLTNames(names);
    EXPECT_EQ(names.m_artists.GetSize(), 1);
    EXPECT_EQ(names.m_albums[0], u"Album");
    EXPECT_EQ(names.m_titles.GetSize(), 0) << "the track has no name";
    music->clearLTObjects();
    EXPECT_FALSE(music->getTrack() || music->getLyrics() || music->getPicture());
    music->getLTNames(names);
}

TEST_F(HDFileLinks, PictureReadsTheArtistOfItsAlbumOrElseItsOwn)
{
    image->setPicture(picture);
    expectAssocs(*image,
                 {{CLTObjectType::Album, album},
                  {CLTObjectType::Artist, artist},
                  {CLTObjectType::Genre, {}},
                  {CLTObjectType::Picture, picture},
                  {CLTObjectType::Track, {}}});
    album->setArtist({});
    expectAssocs(*image, {{CLTObjectType::Artist, painter}});
    picture->setAlbum({});
    expectAssocs(*image, {{CLTObjectType::Album, {}}, {CLTObjectType::Artist, painter}});
    image->clearLTObjects();
    expectAssocs(*image, {{CLTObjectType::Picture, {}}});
}

TEST_F(HDFileLinks, TextReadsThroughItsLyrics)
{
    text->setLyrics(lyrics);
    expectAssocs(*text,
                 {{CLTObjectType::Album, album},
                  {CLTObjectType::Artist, artist},
                  {CLTObjectType::Genre, genre},
                  {CLTObjectType::Lyrics, lyrics},
                  {CLTObjectType::Picture, {}},
                  {CLTObjectType::Track, track}});
    lyrics->setAlbum({});
    lyrics->setTrack({});
    expectAssocs(*text,
                 {{CLTObjectType::Album, {}},
                  {CLTObjectType::Artist, {}},
                  {CLTObjectType::Genre, {}},
                  {CLTObjectType::Lyrics, lyrics}});
    text->clearLTObjects();
    expectAssocs(*text, {{CLTObjectType::Lyrics, {}}});
}
