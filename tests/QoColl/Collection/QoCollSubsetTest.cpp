#include "QoColl/Collection/subsets/QoCollSubset.h"

#include "Logical/LTAlbum.h"
#include "Logical/LTArtist.h"
#include "Logical/LTGenre.h"
#include "QoColl/Collection/subsets/FakeCollSubset.h"
#include "QoColl/Collection/subsets/QoCheckHelper.h"
#include "support/LogCapture.h"
#include "support/Print.h"
#include "support/SampleCollections.h"

#include <set>

namespace
{
using Filter = CQoCollSubset::EFilterType;
using Show = CQoUtils::ShowFilterInfo;
using Parents = CQoUtils::ParentItemsInfo;

/// A subset that is filled file by file, without what makes the kept ones fast.
class SlowSubset : public CQoCollSubset
{
public:
    using CQoCollSubset::CQoCollSubset;
    void fillByText(const Files& files, const CString& text, EFilterType type)
    {
        setFilterText(text, type);
        checkAddFiles(files);
    }
    void fillByKind(const Files& files, const Show& info)
    {
        setShowFilterInfo(info);
        checkAddFiles(files);
    }
};

template <class List>
std::set<const void*> addresses(const List& list)
{
    std::set<const void*> all;
    for (const auto& each : list)
        all.insert(each.get());
    return all;
}

using Counts = std::vector<std::pair<int, int>>;

/// All counts that can be asked for the objects of the list, by the genres, artists and albums of
/// its files.
Counts countsIn(const CQoCollSubset& subset, const CQoUtils::Files& files)
{
    Counts counts(1);
    subset.getFileCount(counts[0].first, counts[0].second);
    const auto add = [&](auto ask)
    {
        counts.emplace_back();
        ask(counts.back().first, counts.back().second);
    };
    for (const auto& file : files)
    {
        using Type = CLTObjectType;
        const auto genre = boost::static_pointer_cast<CLTGenre>(file->getLTAssoc(Type::Genre));
        const auto artist = boost::static_pointer_cast<CLTArtist>(file->getLTAssoc(Type::Artist));
        const auto album = boost::static_pointer_cast<CLTAlbum>(file->getLTAssoc(Type::Album));
        for (int cells = 0; cells < 4; ++cells)
        {
            const Parents parents{(cells & 1) != 0, genre, (cells & 2) != 0, artist, false, {}, {}};
            add([&](int& own, int& other)
                { subset.getAlbumFileCount(album, own, other, parents); });
            add([&](int& own, int& other)
                { subset.getArtistFileCount(artist, own, other, parents); });
        }
        add([&](int& own, int& other) { subset.getGenreFileCount(genre, own, other); });
        add([&](int& own, int& other)
            { subset.getDirFileCount(file->getParentDir(), own, other); });
    }
    return counts;
}

void expectSame(const CQoCollSubset& subset,
                const CQoCollSubset& asked,
                const CQoUtils::Files& files)
{
    EXPECT_EQ(addresses(subset.getFiles()), addresses(asked.getFiles()));
    EXPECT_EQ(addresses(subset.getDirs()), addresses(asked.getDirs()));
    EXPECT_EQ(addresses(subset.getGenres()), addresses(asked.getGenres()));
    EXPECT_EQ(addresses(subset.getArtists()), addresses(asked.getArtists()));
    EXPECT_EQ(addresses(subset.getAlbums()), addresses(asked.getAlbums()));
    EXPECT_EQ(countsIn(subset, files), countsIn(asked, files));
}

/// How many files of the subset have the same genre, artist and album, where all unknown objects
/// are the same.
int filesLike(const CQoCollSubset& subset, const CHDFile& file)
{
    const auto same =
        [](const boost::shared_ptr<CLTObject>& a, const boost::shared_ptr<CLTObject>& b)
    { return a == b || (a && b && a->isUnknown() && b->isUnknown()); };
    int count = 0;
    for (const auto& other : subset.getFiles())
    {
        bool isLike = true;
        for (const auto type : {CLTObjectType::Genre, CLTObjectType::Artist, CLTObjectType::Album})
            isLike = isLike && same(file.getLTAssoc(type), other->getLTAssoc(type));
        count += isLike;
    }
    return count;
}

class QoCollSubset : public RandomChanges
{
protected:
    /// The names of the files in the current subset, sorted.
    static std::string shown()
    {
        std::set<std::string> names;
        for (const auto& file : CQoCollSubset::getCrtSubset().getFiles())
            names.insert(qo::toUtf8(file->getFileName()));
        std::string text;
        for (const std::string& name : names)
            text += name + " ";
        return text;
    }

    CString text;
    Filter type = CQoCollSubset::filterAll;
    Show show;
};
} // namespace

TEST_F(QoCollSubset, ATextFilterFindsBeginningsOfWordsInTheFieldsOfItsType)
{
    add(u"C:\\own\\1.mp3", {u"The Beatles", u"Abbey Road", u"Something", u"Rock"});
    add(u"C:\\own\\2.mp3", {u"Abeam", u"", u"Bea (Live)", u"Beat"});
    add(u"C:\\own\\bea 3.txt");
    add(u"C:\\foreign\\4.mp3", {u"ÉCOLE", u"Bea", u"", u""});
    const struct
    {
        const char16_t* text;
        Filter type;
        const char* shown;
    } cases[] = {
        {u"bea", CQoCollSubset::filterAll, "1.mp3 2.mp3 4.mp3 bea 3.txt "},
        {u"BEA", CQoCollSubset::filterArtist, "1.mp3 "},
        {u"bea", CQoCollSubset::filterAlbum, "4.mp3 "},
        {u"bea", CQoCollSubset::filterTrack, "2.mp3 "},
        {u"beat", CQoCollSubset::filterAll, "1.mp3 2.mp3 "}, // the genre counts here only
        {u"beat", CQoCollSubset::filterTrack, ""},
        {u"a", CQoCollSubset::filterAll, "1.mp3 2.mp3 4.mp3 bea 3.txt "}, // too short to count
        {u"a", CQoCollSubset::filterArtist, "2.mp3 "},
        {u"", CQoCollSubset::filterAlbum, "1.mp3 4.mp3 "}, // all with a known album
        {u"live", CQoCollSubset::filterAll, ""},
        {u"(l", CQoCollSubset::filterAll, "2.mp3 "},
        {u"the b", CQoCollSubset::filterAll, ""}, // no word holds a blank
        {u"école", CQoCollSubset::filterAll, "4.mp3 "},
    };
    for (const auto& each : cases)
    {
        CQoCollSubset::setFilterInfo(each.text, each.type, {});
        EXPECT_EQ(shown(), each.shown) << qo::toUtf8(CString(each.text)) << " " << each.type;
    }
    CQoCollSubset::setFilterInfo(u"bea", CQoCollSubset::filterAll, {true, false, Show::showAll});
    EXPECT_EQ(shown(), "1.mp3 2.mp3 bea 3.txt ");
    EXPECT_FALSE(CQoCollSubset::getCrtSubset().canShowForeignColl());
    CQoCollSubset::setFilterInfo(u"", CQoCollSubset::filterAll, {true, true, Show::ST_NoMedia});
    EXPECT_EQ(shown(), "bea 3.txt ");
}

TEST_F(QoCollSubset, ASubsetIsBuiltWhenItIsAskedForAndTheSameFilterBuildsNothing)
{
    LogCapture log(qo::level::flow);
    const File file = add(u"C:\\own\\beat.mp3");
    EXPECT_TRUE(log.has("creating QoCollSubsets"));
    EXPECT_FALSE(CQoCollSubset::isFollowing());
    EXPECT_TRUE(CQoCollSubset::getCrtSubset().hasCheckObject(file));
    EXPECT_TRUE(CQoCollSubset::isFollowing());

    CQoCollSubset::setFilterInfo(u"be", CQoCollSubset::filterAll, {true, false, Show::showAll});
    const auto* const before = CQoCollSubset::getCrtSubset().getDirs()[0].get();
    const long handles = file.use_count();
    CQoCollSubset::setFilterInfo(u"BE", CQoCollSubset::filterAll, {true, false, Show::showAll});
    EXPECT_EQ(CQoCollSubset::getCrtSubset().getDirs()[0].get(), before);
    EXPECT_EQ(file.use_count(), handles);
    CQoCollSubset::refreshSubsets();
    EXPECT_LT(file.use_count(), handles); // forgotten, and the filter holds
    EXPECT_EQ(shown(), "beat.mp3 ");

    const CFakeCollSubset fake;
    EXPECT_TRUE(fake.hasFile(file) && fake.hasDir(file->getParentDir()) && !fake.hasGenre({}));
}

TEST_F(QoCollSubset, SubsetsThatFollowChangesAreAsIfBuiltAnew)
{
    static constexpr const char16_t* texts[] = {
        u"", u"b", u"be", u"bea", u"beat", u"li", u"live", u"x", u"a"};
    static constexpr int masks[] = {
        Show::showAll, Show::showAll, Show::ST_NoMedia, Show::ST_Audio | Show::ST_Purchased};
    std::set<const void*> followed;
    for (int step = 0; step < 1500; ++step)
    {
        SCOPED_TRACE(step);
        if (upTo(4) == 0)
        {
            text = one(texts);
            type = static_cast<Filter>(1 + upTo(4));
            show = {upTo(4) > 0, upTo(4) > 0, one(masks)};
            CQoCollSubset::setFilterInfo(text, type, show);
        }
        else
            changeOne();
        if (upTo(5) == 0)
        {
            CQoCollection::m_ownCollection.releaseZombieObjects();
            CQoCollection::m_foreignCollection.releaseZombieObjects();
        }
        if (upTo(100) == 0)
            CQoCollSubset::refreshSubsets();

        const CQoUtils::Files files = allFiles();
        const bool hasText = text.GetLength() > 1 || type != CQoCollSubset::filterAll;
        SlowSubset byText(true);
        byText.fillByText(files, hasText ? text : CString(), type);
        SlowSubset byKind(false);
        byKind.fillByKind(hasText ? CQoUtils::Files(byText.getFiles()) : files, show);
        const CQoCollSubset& current = CQoCollSubset::getCrtSubset();
        expectSame(current, byKind, files);
        if (HasFailure())
            return;

        CQoUtils::Files removed;
        CQoUtils::Files added;
        if (!CQoCollSubset::takeChanges(removed, added))
            followed = addresses(CQoCollSubset::getFullSubset().getFiles());
        for (const auto& file : removed)
            EXPECT_EQ(followed.erase(file.get()), 1U);
        for (const auto& file : added)
            EXPECT_TRUE(followed.insert(file.get()).second);
        ASSERT_EQ(followed, addresses(files));
    }
}

TEST_F(QoCollSubset, CombinedCountsAreThoseOfTheFiles)
{
    for (int i = 0; i < 200; ++i)
        add(i % 2 == 0 ? randomPath() : randomPath() + u".mp3", randomTag());
    const CQoCollSubset& subset = CQoCollSubset::getCrtSubset();
    ASSERT_GT(subset.getFiles().GetSize(), 60);
    for (const auto& file : subset.getFiles())
    {
        if (file->getFileType() != CHDFile::FT_Music)
            continue;
        using Type = CLTObjectType;
        const Parents parents{true,
                              boost::static_pointer_cast<CLTGenre>(file->getLTAssoc(Type::Genre)),
                              true,
                              boost::static_pointer_cast<CLTArtist>(file->getLTAssoc(Type::Artist)),
                              true,
                              boost::static_pointer_cast<CLTAlbum>(file->getLTAssoc(Type::Album)),
                              {}};
        int own = 0;
        int foreign = 0;
        subset.getAlbumFileCount(parents.m_album, own, foreign, parents);
        EXPECT_EQ(own + foreign, filesLike(subset, *file));
        int visited = 0;
        subset.visitFiles(parents, [&](const File&) { return ++visited > 0; });
        EXPECT_EQ(visited, own + foreign);
    }
}
