#include "LTFiles.h"
#include "Logical/LTAlbum.h"
#include "Logical/LTArtist.h"
#include "Logical/LTGenre.h"
#include "Logical/LTLyrics.h"
#include "Logical/LTPicture.h"
#include "Logical/LTTrack.h"

#include <boost/smart_ptr/weak_ptr.hpp>

#include <algorithm>
#include <random>

namespace
{
template <class X>
using Handle = boost::shared_ptr<X>;

template <class X>
struct Found
{
    Handle<X> object;
    int position = 0;
};

/// The rule of the binary search, word for word and without any help.
template <class X>
Found<X> searchPlainly(const CPtrListT<X>& list,
                       const SimpleMusicTag& tag,
                       int (*compare)(const SimpleMusicTag*, const Handle<X>&))
{
    int low = 0;
    int high = list.GetSize();
    while (high - low > 8)
    {
        const int middle = (low + high) / 2;
        const int order = compare(&tag, list[middle]);
        if (order == 0)
            return {list[middle], middle};
        if (order < 0)
            high = middle;
        else
            low = middle + 1;
    }
    for (; low < high; ++low)
    {
        const int order = compare(&tag, list[low]);
        if (order == 0)
            return {list[low], low};
        if (order < 0)
            break;
    }
    return {{}, low};
}

template <class X>
bool holds(const CPtrListT<X>& list, const Handle<X>& object)
{
    return std::count(list.begin(), list.end(), object) == 1;
}

/// Files that come and go at random, with what is known of them beside.
class LTManagerSeries : public LTTree
{
protected:
    std::mt19937 random{11};
    std::vector<Handle<CLTTrack>> order; ///< the tracks as the searches placed them
    std::vector<boost::weak_ptr<CLTObject>> made;
    int wordCount = 6;

    bool chance(unsigned percent) { return random() % 100 < percent; }
    CString name(unsigned kinds, unsigned unknownPercent)
    {
        if (chance(unknownPercent))
            return {};
        // Some differ early, some late, and some have letters beyond ASCII.
        static const char16_t* forms[][2] = {{u"%d of many", u"%d OF Many"},
                                             {u"Name of very many %d", u"NAME of very many %d"},
                                             {u"Café %d", u"CAFÉ %d"}};
        const auto number = static_cast<int>(random() % kinds);
        CString text;
        text.Format(forms[number % 3][random() % 2], number);
        return text;
    }
    SimpleMusicTag randomTag()
    {
        static const char16_t* years[] = {u"", u"", u"98", u"1998", u"2098", u"1975", u"75", u"x"};
        static const char16_t* numbers[] = {u"", u"1", u"2/9", u"02", u"3", u"abc", u"/7"};
        const auto kinds = static_cast<unsigned>(wordCount);
        return {name(kinds, 10),
                name(kinds, 10),
                name(kinds * 2, 5),
                name(4, 20),
                numbers[random() % std::size(numbers)],
                years[random() % std::size(years)]};
    }

    template <class X>
    Found<X> expectSameSearch(const CPtrListT<X>& list,
                              const SimpleMusicTag& tag,
                              int (*compare)(const SimpleMusicTag*, const Handle<X>&),
                              Handle<X> (*find)(const SimpleMusicTag&, int&))
    {
        const Found<X> plain = searchPlainly(list, tag, compare);
        int position = -1;
        EXPECT_EQ(find(tag, position), plain.object);
        EXPECT_EQ(position, plain.position);
        return plain;
    }
    template <class X>
    void expectFoundOrNew(const Found<X>& plain, const Handle<X>& object, bool isNew)
    {
        EXPECT_TRUE(plain.object ? object == plain.object : isNew);
        if (!plain.object)
            made.push_back(object);
    }

    void addRandomMusic()
    {
        const SimpleMusicTag tag = randomTag();
        const auto track = expectSameSearch<CLTTrack>(
            CLTManager::getTracks(), tag, CLTManager::compareLTTracks, CLTManager::findLTTrack);
        const auto album = expectSameSearch<CLTAlbum>(
            CLTManager::getAlbums(), tag, CLTManager::compareLTAlbums, CLTManager::findLTAlbum);
        const auto artist = expectSameSearch<CLTArtist>(
            CLTManager::getArtists(), tag, CLTManager::compareLTArtists, CLTManager::findLTArtist);
        const auto genre = expectSameSearch<CLTGenre>(
            CLTManager::getGenres(), tag, CLTManager::compareLTGenres, CLTManager::findLTGenre);
        const int albums = CLTManager::getAlbums().GetSize();
        const int artists = CLTManager::getArtists().GetSize();
        const Handle<CLTTrack> own = addMusic(tag)->getTrack();
        ASSERT_TRUE(own);
        made.push_back(own);
        order.insert(order.begin() + track.position, own);
        expectFoundOrNew(album, own->getAlbum(), CLTManager::getAlbums().GetSize() == albums + 1);
        expectFoundOrNew(
            artist, own->getArtist(), CLTManager::getArtists().GetSize() == artists + 1);
        expectFoundOrNew(genre, own->getGenre(), true);
    }

    template <class FILE>
    FILE takeAny(std::vector<FILE>& files)
    {
        const std::size_t index = random() % files.size();
        const FILE file = files[index];
        files.erase(files.begin() + static_cast<std::ptrdiff_t>(index));
        return file;
    }

    void doAnything()
    {
        const unsigned dice = random() % 100;
        if (dice < 45)
            addRandomMusic();
        else if (dice < 53)
            addPicture(randomTag());
        else if (dice < 61)
            addText(randomTag());
        else if (dice < 80 && !musics.empty())
            CLTManager::releaseMusicLTObjects(takeAny(musics));
        else if (dice < 85 && !pictures.empty())
            CLTManager::releasePictureLTObjects(takeAny(pictures));
        else if (dice < 90 && !texts.empty())
            CLTManager::releaseLyricsLTObjects(takeAny(texts));
        else if (dice >= 97)
            cleanUpAndCheck();
    }

    void cleanUpAndCheck()
    {
        CLTManager::cleanUp(false);
        std::erase_if(order, [](const auto& track) { return !track->isUsed(); });
        EXPECT_TRUE(std::equal(order.begin(),
                               order.end(),
                               CLTManager::getTracks().begin(),
                               CLTManager::getTracks().end()));
        expectAllUsed(CLTManager::getTracks());
        expectAllUsed(CLTManager::getAlbums());
        expectAllUsed(CLTManager::getArtists());
        expectAllUsed(CLTManager::getGenres());
        expectAllUsed(CLTManager::getLyrics());
        expectAllUsed(CLTManager::getPictures());
        expectLinks();
    }
    template <class X>
    void expectAllUsed(const CPtrListT<X>& list)
    {
        EXPECT_TRUE(
            std::all_of(list.begin(), list.end(), [](const auto& each) { return each->isUsed(); }));
    }

    /// Whoever is linked to lists the other end, and what a list holds knows its owner. Only an
    /// album may stand with two artists: the second one came while the first was not let go.
    void expectLinks()
    {
        for (const auto& track : CLTManager::getTracks())
        {
            EXPECT_TRUE(holds(track->getArtist()->getTracks(), track));
            EXPECT_TRUE(holds(track->getAlbum()->getTracks(), track));
            EXPECT_TRUE(holds<CLTTrack>(track->getGenre()->getTracks(), track));
            EXPECT_TRUE(holds(CLTManager::getArtists(), track->getArtist()));
            EXPECT_TRUE(holds(CLTManager::getAlbums(), track->getAlbum()));
            EXPECT_TRUE(holds(CLTManager::getGenres(), track->getGenre()));
            EXPECT_TRUE(!track->getLyrics() || track->getLyrics()->getTrack() == track);
            for (const auto& file : track->getMusicFiles())
                EXPECT_EQ(file->getTrack(), track);
        }
        for (const auto& album : CLTManager::getAlbums())
        {
            EXPECT_TRUE(!album->getArtist() || holds(album->getArtist()->getAlbums(), album));
            for (const auto& track : album->getTracks())
                EXPECT_EQ(track->getAlbum(), album);
            for (const auto& picture : album->getPictures())
                EXPECT_EQ(picture->getAlbum(), album);
            for (const auto& lyrics : album->getLyrics())
                EXPECT_EQ(lyrics->getAlbum(), album);
        }
        for (const auto& artist : CLTManager::getArtists())
        {
            for (const auto& track : artist->getTracks())
                EXPECT_EQ(track->getArtist(), artist);
            for (const auto& album : artist->getAlbums())
                EXPECT_TRUE(album->getArtist());
        }
        for (const auto& genre : CLTManager::getGenres())
            for (const auto& track : genre->getTracks())
                EXPECT_EQ(track->getGenre(), genre);
    }

    void TearDown() override
    {
        order.clear();
        LTTree::TearDown();
        for (const auto& object : made)
            EXPECT_TRUE(object.expired());
    }
};
} // namespace

TEST_F(LTManagerSeries, KeepsLinksAndOrderThroughRandomChanges)
{
    for (int step = 0; step < 6000; ++step)
        doAnything();
    EXPECT_GT(CLTManager::getTracks().GetSize(), 300);
    EXPECT_GT(CLTManager::getPictures().GetSize(), 10);
    EXPECT_GT(CLTManager::getLyrics().GetSize(), 10);
    cleanUpAndCheck();
}

TEST_F(LTManagerSeries, SearchesLongListsOfManyNamesAsThePlainRuleDoes)
{
    wordCount = 900;
    for (int i = 0; i < 4000; ++i)
        addRandomMusic();
    for (int i = 0; i < 1500; ++i)
        CLTManager::releaseMusicLTObjects(takeAny(musics));
    cleanUpAndCheck();
    for (int i = 0; i < 500; ++i)
        addRandomMusic();
    cleanUpAndCheck();
}
