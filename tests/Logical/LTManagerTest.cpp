#include "Logical/LTManager.h"

#include "LTFiles.h"
#include "Logical/LTAlbum.h"
#include "Logical/LTArtist.h"
#include "Logical/LTGenre.h"
#include "Logical/LTLists.h"
#include "Logical/LTLyrics.h"
#include "Logical/LTPicture.h"
#include "Logical/LTTrack.h"
#include "support/DocExample.h"
#include "support/LogCapture.h"
#include "support/Print.h"
#include "support/Sign.h"

#include <sstream>
#include <utility>

namespace
{
/// The cells of a row "a | b | c" without the blanks around them.
std::vector<CString> cellsOf(const std::string& row)
{
    std::vector<CString> cells;
    std::istringstream in(row + " |");
    for (std::string cell; std::getline(in, cell, '|');)
        cells.push_back(qo::fromUtf8(cell).Trim());
    return cells;
}

SimpleMusicTag tagOf(const std::vector<CString>& cells)
{
    return {cells.at(0), cells.at(1), cells.at(2), cells.at(3), cells.at(4), cells.at(5)};
}

template <class X>
std::string textsOf(const CPtrListT<X>& list)
{
    std::string text;
    for (const auto& object : list)
        text += qo::toUtf8(object->toString(false)) + "\n";
    return text;
}

using LTManager = LTTree;
} // namespace

TEST(LTManagerCompare, TextsOfNumbersYearsAndTracks)
{
    using Compare = int (*)(const char16_t*, const char16_t*);
    const Compare numbers = CLTManager::compareLTNumbers;
    const Compare tracks = CLTManager::compareLTTrackNumbers;
    const Compare years = CLTManager::compareLTYears;
    const Compare names = CLTManager::compareLTNames;
    const struct
    {
        Compare compare;
        const char16_t* a;
        const char16_t* b;
        int order;
    } rows[] = {
        {numbers, u"", u"7", 0},         {numbers, u"9", u"10", -1},
        {numbers, u"007", u"7", 0},      {numbers, u"9a", u"10", 1},
        {numbers, u"-1", u"1", -1},      {numbers, u"99999999999", u"88888888888", 0},
        {years, u"", u"1998", 0},        {years, u"98", u"1998", 0},
        {years, u"2098", u"98", 0},      {years, u"1998", u"2098", -1},
        {years, u"97", u"1998", -1},     {years, u"98", u"99", -1},
        {years, u"0", u"100", 0},        {years, u"100", u"1900", -1},
        {years, u"1998-05", u"1998", 1}, {years, u"MCM", u"mcm", 0},
        {tracks, u"2", u"02/12", 0},     {tracks, u"3/12", u"3/10", 0},
        {tracks, u"abc", u"5", 0},       {tracks, u"/12", u"5", 0},
        {tracks, u"", u"5", 0},          {tracks, u"3/12", u"12/3", -1},
        {names, u"ABBA", u"abba", 0},    {names, u"The Larks", u"Larks", 1},
        {names, u"", u"a", -1},          {names, u"Ä", u"ä", 0},
        {names, u"a", u"ä", -1},         {names, u"a ", u"a", 1},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(qo::toUtf8(CString(row.a)) + " and " + qo::toUtf8(CString(row.b)));
        EXPECT_EQ(sign(row.compare(row.a, row.b)), row.order);
        EXPECT_EQ(sign(row.compare(row.b, row.a)), -row.order);
    }
    for (const char16_t* text : {u"", u"1a", u"-1", u" 1", u"\x0661"})
        EXPECT_FALSE(CLTManager::isNumber(text));
    EXPECT_TRUE(CLTManager::isNumber(u"0042"));
}

TEST_F(LTManager, ComparisonOfTracksGoesByTitleArtistYearAlbumAndNumber)
{
    const SimpleMusicTag base = {u"m", u"m", u"m", u"m", u"5", u"1998"};
    const auto track = addMusic(base)->getTrack();
    const std::pair<SimpleMusicTag, int> rows[] = {
        {{u"M", u"M", u"M", u"other", u"05/9", u"98"}, 0},
        {{u"m", u"m", u"m", u"m", u"", u""}, 0},
        {{u"z", u"z", u"a", u"m", u"9", u"2099"}, -1},
        {{u"a", u"z", u"m", u"m", u"9", u"2099"}, -1},
        {{u"m", u"z", u"m", u"m", u"9", u"1997"}, -1},
        {{u"m", u"z", u"m", u"m", u"1", u"1998"}, 1},
        {{u"m", u"m", u"m", u"m", u"6", u"1998"}, 1},
        {{u"", u"m", u"m", u"m", u"5", u"1998"}, -1},
        {{u"m", u"m", u"", u"m", u"5", u"1998"}, -1},
    };
    for (const auto& [tag, order] : rows)
    {
        EXPECT_EQ(sign(CLTManager::compareLTTracks(&tag, track)), order);
        const auto other = addMusic(tag)->getTrack();
        EXPECT_EQ(sign(CLTManager::compareLTTracks(other, track)), order);
        EXPECT_EQ(CLTManager::compareLTObjects(track, other), order == 0);
        EXPECT_FALSE(CLTManager::compareLTObjects(track, other->getGenre()));
    }
}

TEST_F(LTManager, UnknownObjectsSortAheadAndEqualNothing)
{
    const auto named = addMusic({u"a", u"b", u"c", u"d", u"", u""})->getTrack();
    const auto unknown = addMusic({})->getTrack();
    const SimpleMusicTag none;
    EXPECT_EQ(CLTManager::compareLTTracks(unknown, unknown), -1);
    EXPECT_EQ(CLTManager::compareLTTracks(named, unknown), 1);
    EXPECT_EQ(CLTManager::compareLTTracks(&none, unknown), 1);
    EXPECT_EQ(CLTManager::compareLTAlbums(unknown->getAlbum(), unknown->getAlbum()), -1);
    EXPECT_EQ(CLTManager::compareLTAlbums(&none, unknown->getAlbum()), 1);
    EXPECT_EQ(CLTManager::compareLTArtists(named->getArtist(), unknown->getArtist()), 1);
    EXPECT_EQ(CLTManager::compareLTArtists(&none, named->getArtist()), -1);
    EXPECT_EQ(CLTManager::compareLTGenres(&none, unknown->getGenre()), 0);
    EXPECT_FALSE(CLTManager::compareLTObjects(unknown->getAlbum(), unknown->getAlbum()));
    EXPECT_TRUE(CLTManager::compareLTObjects(unknown->getGenre(), unknown->getGenre()));
    EXPECT_TRUE(CLTManager::compareLTObjects(named->getAlbum(), named->getAlbum()));

    const auto second = addMusic({u"", u"Same", u"", u"", u"", u""})->getTrack();
    const auto third = addMusic({u"", u"same", u"", u"", u"", u""})->getTrack();
    EXPECT_NE(second->getArtist(), third->getArtist());
    EXPECT_NE(second->getAlbum(), third->getAlbum());
    EXPECT_EQ(second->getGenre(), third->getGenre());
    EXPECT_FALSE(CLTManager::findLTArtist(CString()));
    EXPECT_EQ(CLTManager::findLTArtist(CString(u"A")), named->getArtist());
}

TEST_F(LTManager, RowsOfTheDocumentAreTheSameOrNot)
{
    for (const std::string& row : docExampleLines("sameness-of-names.md", "sameness"))
    {
        SCOPED_TRACE(row);
        const std::vector<CString> cells = cellsOf(row);
        ASSERT_EQ(cells.size(), 4U);
        bool same = false;
        if (cells[0] == u"year")
            same = CLTManager::compareLTYears(cells[1], cells[2]) == 0;
        else if (cells[0] == u"number")
            same = CLTManager::compareLTTrackNumbers(cells[1], cells[2]) == 0;
        else
        {
            const bool genre = cells[0] == u"genre";
            SimpleMusicTag a;
            SimpleMusicTag b;
            (genre ? a.genre : a.artist) = cells[1];
            (genre ? b.genre : b.artist) = cells[2];
            const auto first = addMusic(a)->getTrack();
            const auto second = addMusic(b)->getTrack();
            same = genre ? first->getGenre() == second->getGenre()
                         : first->getArtist() == second->getArtist();
        }
        EXPECT_EQ(same, cells[3] == u"same");
        EXPECT_TRUE(same || cells[3] == u"different");
    }
}

TEST_F(LTManager, FilesOfTheDocumentMakeItsObjectsInItsOrder)
{
    for (const std::string& row : docExampleLines("sameness-of-names.md", "files"))
    {
        ASSERT_EQ(cellsOf(row).size(), 6U) << row;
        addMusic(tagOf(cellsOf(row)));
    }
    EXPECT_EQ(textsOf(CLTManager::getArtists()) + textsOf(CLTManager::getAlbums()) +
                  textsOf(CLTManager::getGenres()) + textsOf(CLTManager::getTracks()),
              docExample("sameness-of-names.md", "objects"));
}

TEST_F(LTManager, PictureJoinsAnAlbumOrElseAnArtistAndMakesNeither)
{
    const auto track = addMusic({u"A", u"X", u"t", u"g", u"1", u""})->getTrack();
    const auto ofAlbum = addPicture({u"a", u"x", u"", u"", u"", u""})->getPicture();
    const auto ofArtist = addPicture({u"A", u"other", u"", u"", u"", u""})->getPicture();
    EXPECT_FALSE(addPicture({u"nobody", u"X", u"", u"", u"", u""})->getPicture());
    ASSERT_TRUE(ofAlbum && ofArtist);
    EXPECT_EQ(ofAlbum->getAlbum(), track->getAlbum());
    EXPECT_FALSE(ofAlbum->getArtist());
    EXPECT_EQ(ofArtist->getArtist(), track->getArtist());
    int position = 77;
    EXPECT_EQ(CLTManager::findLTPicture(pictures[1], position), ofArtist);
    EXPECT_EQ(position, 77);
    EXPECT_TRUE(CLTManager::compareLTPictures(ofAlbum, ofAlbum));
    EXPECT_FALSE(CLTManager::compareLTPictures(ofAlbum, ofArtist));
    CLTManager::releasePictureLTObjects(pictures[1]);
    EXPECT_FALSE(ofArtist->getArtist());
    EXPECT_TRUE(track->getArtist()->getPictures().IsEmpty());
    EXPECT_FALSE(CLTManager::compareLTPictures(ofArtist, ofArtist));
}

TEST_F(LTManager, LyricsOfATrackAreSharedAndThoseOfAnAlbumAreNot)
{
    const auto track = addMusic({u"A", u"X", u"t", u"g", u"1", u""})->getTrack();
    const SimpleMusicTag ofTrack = {u"A", u"X", u"T", u"", u"", u""};
    const SimpleMusicTag ofAlbum = {u"A", u"X", u"", u"", u"", u""};
    EXPECT_EQ(addText(ofTrack)->getLyrics(), addText(ofTrack)->getLyrics());
    EXPECT_NE(addText(ofAlbum)->getLyrics(), addText(ofAlbum)->getLyrics());
    EXPECT_FALSE(addText({u"A", u"other", u"", u"", u"", u""})->getLyrics());
    EXPECT_EQ(track->getLyrics()->getFiles().GetSize(), 2);
    EXPECT_EQ(track->getAlbum()->getLyrics().GetSize(), 2);
    int position = 0;
    EXPECT_EQ(CLTManager::findLTLyrics(texts[1], position), track->getLyrics());

    CLTManager::releaseMusicLTObjects(musics[0]);
    CLTManager::cleanUp(false);
    EXPECT_EQ(CLTManager::getTracks().GetSize(), 1) << "its lyrics keep the track";
    EXPECT_TRUE(track->getArtist());
    CLTManager::releaseLyricsLTObjects(texts[0]);
    CLTManager::releaseLyricsLTObjects(texts[1]);
    EXPECT_FALSE(track->getLyrics());
    CLTManager::cleanUp(false);
    EXPECT_TRUE(CLTManager::getTracks().IsEmpty());
    EXPECT_TRUE(CLTManager::getArtists().IsEmpty());
    EXPECT_EQ(CLTManager::getAlbums().GetSize(), 1);
}

TEST_F(LTManager, AlbumThatLostItsArtistIsPassedOverBySearches)
{
    const SimpleMusicTag tag = {u"A", u"X", u"t", u"g", u"1", u""};
    const auto old = addMusic(tag)->getTrack()->getAlbum();
    const auto picture = addPicture(tag);
    CLTManager::releaseMusicLTObjects(musics[0]);
    CLTManager::cleanUp(false);
    ASSERT_EQ(CLTManager::getAlbums().find(old), 0);
    EXPECT_FALSE(old->getArtist());
    EXPECT_FALSE(picture->getLTAssoc(CLTObjectType::Artist));
    int position = 0;
    EXPECT_FALSE(CLTManager::findLTAlbum(tag, position));
    EXPECT_EQ(position, 1);
    EXPECT_NE(addMusic(tag)->getTrack()->getAlbum(), old);
    EXPECT_FALSE(CLTManager::compareLTObjects(old, old));
}

TEST_F(LTManager, AlbumThatLostItsArtistMisleadsSearchesOfItsNameAtOnce)
{
    // The search for the album of B asks that of F first, which sends it to the right.
    const char16_t artists[][2] = {u"A", u"B", u"C", u"D", u"E", u"F", u"G", u"H", u"I", u"J"};
    for (const char16_t* artist : artists)
        addMusic({artist, u"X", u"t", u"g", u"", u""});
    addPicture({u"F", u"X", u"", u"", u"", u""});
    const SimpleMusicTag tag = {u"B", u"X", u"t", u"g", u"", u""};
    EXPECT_EQ(addMusic(tag)->getTrack()->getAlbum(), musics[1]->getTrack()->getAlbum());
    CLTManager::releaseMusicLTObjects(musics[5]);
    int position = 0;
    EXPECT_FALSE(CLTManager::findLTAlbum(tag, position));
    EXPECT_EQ(CLTManager::createLTAlbum(tag), CLTManager::getAlbums()[position]);
}

TEST_F(LTManager, CleanUpAndStatisticsTellWhatTheyFound)
{
    addMusic({u"A", u"X", u"t", u"g", u"1", u""});
    addMusic({u"", u"X", u"", u"g", u"", u""});
    CLTManager::releaseMusicLTObjects(musics[0]);
    LogCapture log;
    CLTManager::logStatistics();
    EXPECT_EQ(log.all(),
              "50:         LTAlbums: 2 / 0 unknown / 1 unused\n"
              "50:        LTArtists: 2 / 1 unknown / 1 unused\n"
              "50:         LTGenres: 1 / 0 unknown / 0 unused\n"
              "50:         LTLyrics: 0 / 0 unknown / 0 unused\n"
              "50:       LTPictures: 0 / 0 unknown / 0 unused\n"
              "50:         LTTracks: 2 / 1 unknown / 1 unused\n");
    log.clear();
    CLTManager::cleanUp(false);
    EXPECT_EQ(log.all(),
              "40: cleaned up 1 LTAlbums\n40: cleaned up 1 LTArtists\n40: cleaned up 1 LTTracks\n");
    log.clear();
    CLTManager::cleanUp(false);
    EXPECT_EQ(log.all(), "");
    CLTManager::cleanUp(true);
    EXPECT_EQ(log.all(),
              "10: 1 unreleased LTAlbums objects (1)\n10: 1 unreleased LTArtists objects (2)\n"
              "10: 1 unreleased LTGenres objects (4)\n10: 1 unreleased LTTracks objects (32)\n");
    EXPECT_TRUE(CLTManager::getTracks().IsEmpty());
    int position = 0;
    EXPECT_FALSE(CLTManager::findLTTrack({}, position));
    EXPECT_EQ(position, 0);
}

TEST_F(LTManager, ClearsAndReleasesTakeTheObjectsOwnHandles)
{
    const auto fill = [this](const char16_t* title) {
        return addMusic({u"A", u"X", title, u"g", u"1", u""})->getTrack();
    };
    const auto first = fill(u"1");
    const auto artist = first->getArtist();
    const auto album = first->getAlbum();
    const auto genre = first->getGenre();
    fill(u"2");
    fill(u"3");
    for (int left = 2; left >= 0; --left)
    {
        const auto& track = artist->getTracks()[0];
        CLTManager::clearArtistToTrackLink(track->getArtist(), track);
        EXPECT_EQ(artist->getTracks().GetSize(), left);
    }
    CLTManager::clearAlbumToTrackLink(album->getTracks()[0]->getAlbum(), album->getTracks()[0]);
    CLTManager::clearTrackToGenreLink(genre->getTracks()[0], genre->getTracks()[0]->getGenre());
    CLTManager::clearArtistToAlbumLink(album->getArtist(), artist->getAlbums()[0]);
    EXPECT_EQ(album->getTracks().GetSize(), 2);
    EXPECT_EQ(genre->getTracks().GetSize(), 2);
    EXPECT_TRUE(artist->getAlbums().IsEmpty());
    CLTManager::releaseMusicLTObjects(first->getMusicFiles()[0]);
    EXPECT_FALSE(first->isUsed());
    EXPECT_FALSE(musics[0]->getTrack());
}

TEST_F(LTManager, ListsOfObjectsAreReleasedCleanedUpAndLogged)
{
    struct Protected : CLTManager
    {
        using CLTManager::checkReleaseObjects;
        using CLTManager::cleanUpLTList;
        using CLTManager::getLTList;
        using CLTManager::logLTList;
    };
    const auto kept = addMusic({u"A", u"X", u"kept", u"g", u"1", u""})->getTrack();
    const auto gone = addMusic({u"A", u"X", u"", u"g", u"2", u""})->getTrack();
    gone->removeMusicFile(musics[1]);
    CPtrListT<CLTObject> list;
    list.add(kept);
    list.add(gone);
    LogCapture log;
    Protected::logLTList(u"mine", list);
    Protected::checkReleaseObjects(list);
    EXPECT_TRUE(kept->getAlbum());
    EXPECT_FALSE(gone->getAlbum());
    Protected::cleanUpLTList(list, false, nullptr);
    EXPECT_EQ(list.GetSize(), 1);
    Protected::cleanUpLTList(list, true, u"mine");
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_EQ(log.all(),
              "50:             mine: 2 / 1 unknown / 1 unused\n"
              "40: cleaned up 1 lt objects of type 32\n"
              "10: 1 unreleased mine objects (32)\n");
    const char16_t* name = nullptr;
    ASSERT_TRUE(Protected::getLTList(CLTObjectType::Track, &name));
    EXPECT_EQ(CString(name), CString(u"LTTracks"));
    EXPECT_EQ(Protected::getLTList(CLTObjectType::Track, nullptr)->count(), 2);
    EXPECT_FALSE(Protected::getLTList(static_cast<CLTObjectType::EType>(3), &name));
}

TEST_F(LTManager, CheckMarksAreTakenOffAllObjects)
{
    const auto track = addMusic({u"A", u"X", u"t", u"g", u"1", u""})->getTrack();
    track->setCheckState(CQoCheckState::CS_Checked);
    track->getGenre()->setCheckState(CQoCheckState::CS_Mixed);
    CLTManager::resetCheckState();
    EXPECT_TRUE(track->isNotChecked());
    EXPECT_TRUE(track->getGenre()->isNotChecked());
}
