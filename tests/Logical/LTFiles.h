#pragma once

#include "Logical/LTManager.h"
#include "Physical/HDMusicFile.h"
#include "Physical/HDPictureFile.h"
#include "Physical/HDTextFile.h"
#include "QoColl/Tags/SimpleMusicTag.h"
#include "support/Records.h"

#include <gtest/gtest.h>

#include <vector>

/// A tag in the order of its fields: artist, album, title, genre, track number, year.
inline boost::shared_ptr<CHDFile> makeTaggedFile(const char16_t* path, const SimpleMusicTag& tag)
{
    const auto item = recordOf(path);
    item->artist = tag.artist;
    item->album = tag.album;
    item->title = tag.title;
    item->genre = tag.genre;
    item->trackNumber = tag.trackNumber;
    item->year = tag.year;
    return CHDFile::createHDFile(item);
}

/// Files with logical objects, all released and cleaned up in the end.
class LTTree : public testing::Test
{
protected:
    using Music = boost::shared_ptr<CHDMusicFile>;
    using Picture = boost::shared_ptr<CHDPictureFile>;
    using Text = boost::shared_ptr<CHDTextFile>;

    LTTree() { CLTManager::init(); }
    void TearDown() override
    {
        for (const Text& file : texts)
            CLTManager::releaseLyricsLTObjects(file);
        for (const Picture& file : pictures)
            CLTManager::releasePictureLTObjects(file);
        for (const Music& file : musics)
            CLTManager::releaseMusicLTObjects(file);
        CLTManager::cleanUp(false);
        EXPECT_EQ(CLTManager::getAlbums().GetSize() + CLTManager::getArtists().GetSize() +
                      CLTManager::getGenres().GetSize() + CLTManager::getTracks().GetSize() +
                      CLTManager::getLyrics().GetSize() + CLTManager::getPictures().GetSize(),
                  0);
        CLTManager::cleanUp(true);
    }

    const Music& addMusic(const SimpleMusicTag& tag)
    {
        musics.push_back(
            boost::static_pointer_cast<CHDMusicFile>(makeTaggedFile(u"C:\\m\\a.mp3", tag)));
        CLTManager::createMusicLTObjects(musics.back());
        return musics.back();
    }
    const Picture& addPicture(const SimpleMusicTag& tag)
    {
        pictures.push_back(
            boost::static_pointer_cast<CHDPictureFile>(makeTaggedFile(u"C:\\m\\a.jpg", tag)));
        CLTManager::createPictureLTObjects(pictures.back());
        return pictures.back();
    }
    const Text& addText(const SimpleMusicTag& tag)
    {
        texts.push_back(
            boost::static_pointer_cast<CHDTextFile>(makeTaggedFile(u"C:\\m\\a.txt", tag)));
        CLTManager::createLyricsLTObjects(texts.back());
        return texts.back();
    }

    std::vector<Music> musics;
    std::vector<Picture> pictures;
    std::vector<Text> texts;
};
