#include "core/moved/MovedFiles.h"

#include "core/moved/HeadStore.h"
#include "core/roots/RootLister.h"
#include "host/core/LoadedCollection.h"
#include "support/Words.h"

#include <QoKernel/Tags.h>

#include <algorithm>
#include <chrono>

using namespace qo::host;
namespace fs = std::filesystem;

namespace
{
class MovedFilesTest : public testing::Test
{
protected:
    void rename(const std::string& from, const std::string& to)
    {
        fs::create_directories(fs::path(here.dir.path(to)).parent_path());
        fs::rename(here.dir.path(from), here.dir.path(to));
    }
    void touch(const std::string& path)
    {
        fs::last_write_time(here.dir.path(path), fs::file_time_type::clock::now());
    }
    void storeHeads()
    {
        here.run(
            [&]
            {
                QoFileDbItemArray records;
                CQoCollection::m_ownCollection.copyFiles(records);
                HeadStore heads;
                heads.update(records, *here.progress);
                heads.save();
            });
    }
    MovedFiles find()
    {
        return here.run(
            [&]
            {
                RootLister lister(RootFolders().folders(), here.session->ignoredNames());
                return findMoved(HeadStore(), lister, *here.progress);
            });
    }
    /// "from>to ...", sorted.
    std::string offers(const MovedFiles& found) const
    {
        std::vector<std::string> words;
        const auto relative = [this](const CString& path)
        { return qo::toSystemPath(path).substr(here.dir.path("music/").size()); };
        for (const MoveOffer& offer : found.offers)
            words.push_back(relative(offer.from) + ">" + relative(offer.to));
        for (const UnclearMove& unclear : found.unclear)
            words.push_back(relative(unclear.from) + "?" +
                            std::to_string(unclear.candidates.size()));
        std::sort(words.begin(), words.end());
        std::string text;
        for (const std::string& word : words)
            text += (text.empty() ? "" : " ") + word;
        return text;
    }

    LoadedCollection here;
};
} // namespace

TEST_F(MovedFilesTest, AFileWithOtherTagsBringsThemAlongHoweverOldItIs)
{
    const auto add = [this](const std::string& path, const char16_t* title)
    {
        CMusicTagEx tag;
        tag.setTitle(title, CTagAttribValue::SV_Edited, true);
        EXPECT_TRUE(tag.writeTag(here.addSound(path)));
    };
    add("music/a/1.mp3", u"One");
    here.load();
    storeHeads();
    const auto before = here.records();
    fs::remove_all(here.dir.path("music/a"));
    add("music/b/2.mp3", u"Two");
    fs::last_write_time(here.dir.path("music/b/2.mp3"),
                        fs::file_time_type::clock::now() - std::chrono::hours(24));
    const MovedFiles found = find();
    ASSERT_EQ(offers(found), "a/1.mp3>b/2.mp3");
    here.run([&] { applyMoves(*here.session, found.offers, *here.progress); });
    here.load();
    here.expectRecords(here.renamed(before, "music/a/1.mp3", "music/b/2.mp3"));
    const CString title = here.run(
        [&]
        {
            return CQoCollection::m_ownCollection.getFileByPath(here.dir.collPath("music/b/2.mp3"))
                ->getDbItem()
                ->title;
        });
    EXPECT_EQ(qo::toUtf8(title), "Two");
}

TEST_F(MovedFilesTest, FilesThatMovedKeepTheirIds)
{
    here.addSound("music/a/1.mp3");
    here.addSound("music/a/2.flac", "sound.flac");
    here.addSound("music/a/cover.jpg", "red.jpg");
    here.addSound("music/gone.ogg", "sound.ogg");
    here.load();
    const auto before = here.records();
    rename("music/a", "music/b/c");
    rename("music/b/c/1.mp3", "music/renamed.mp3");
    fs::remove(here.dir.path("music/gone.ogg"));
    here.addSound("music/new.wav", "sound.wav");
    here.load(false);

    const MovedFiles found = find();
    EXPECT_EQ(offers(found), "a/1.mp3>renamed.mp3 a/2.flac>b/c/2.flac a/cover.jpg>b/c/cover.jpg");
    EXPECT_EQ(found.vanished, 4);
    EXPECT_EQ(found.unknown, 4);
    EXPECT_EQ(here.records(), before) << "looking changes nothing";
    here.run([&] { applyMoves(*here.session, found.offers, *here.progress); });
    here.load();
    const auto after = here.records();
    EXPECT_EQ(after.size(), 4U);
    EXPECT_EQ(after.at("music/renamed.mp3"), before.at("music/a/1.mp3"));
    EXPECT_EQ(after.at("music/b/c/2.flac"), before.at("music/a/2.flac"));
    EXPECT_EQ(after.at("music/b/c/cover.jpg"), before.at("music/a/cover.jpg"));
    EXPECT_EQ(here.stored(), after);
}

TEST_F(MovedFilesTest, StoredHeadsTellFilesApartThatLookAlike)
{
    KVTagLib::CTags tags;
    tags.SetTitle(u"A song");
    ASSERT_TRUE(CMusicTagEx::writeTag(here.addSound("music/1.mp3"), tags));
    here.dir.write("music/1.txt", "one and the same size");
    here.dir.write("music/2.txt", "another of equal size");
    here.load();
    storeHeads();
    for (const char* name : {"1.mp3", "1.txt", "2.txt"})
    {
        rename(std::string("music/") + name, std::string("music/x/new ") + name);
        touch(std::string("music/x/new ") + name);
    }
    here.load(false);
    EXPECT_EQ(offers(find()), "1.mp3>x/new 1.mp3 1.txt>x/new 1.txt 2.txt>x/new 2.txt");
    fs::remove(here.dir.path("data/Qorganizer/host.db"));
    EXPECT_EQ(offers(find()), "1.mp3>x/new 1.mp3") << "tags and length tell, a text has neither";
    here.dir.write("data/Qorganizer/heads", "velmora-heads 1\nnonsense\na b c d\n");
    EXPECT_EQ(offers(find()), "1.mp3>x/new 1.mp3");
}

TEST_F(MovedFilesTest, TwoCandidatesAreNamedAndLeftAlone)
{
    here.addSound("music/1.mp3");
    here.addSound("music/other.flac", "sound.flac");
    here.addSound("music/again.flac", "sound.flac");
    here.load();
    storeHeads();
    rename("music/1.mp3", "music/x/1.mp3");
    here.addSound("music/y/1.mp3");
    fs::remove(here.dir.path("music/again.flac"));
    rename("music/other.flac", "music/x/other.flac");
    here.load(false);
    EXPECT_EQ(offers(find()), "1.mp3?2 other.flac>x/other.flac");
}

TEST_F(MovedFilesTest, HeadStaysWhenAFileIsTagged)
{
    for (const std::string& sound : wordsOf("sound.mp3 sound.flac sound.ogg sound.opus sound.m4a "
                                            "sound.wav sound.wma sound.wv"))
    {
        const CString path = here.addSound("sounds/" + sound, sound);
        const auto before = KVTagLib::digestOfSoundHead(path);
        KVTagLib::CTags tags;
        tags.SetTitle(u"another title that is long enough to move things about");
        EXPECT_TRUE(CMusicTagEx::writeTag(path, tags)) << sound;
        EXPECT_TRUE(before.has_value()) << sound;
        EXPECT_EQ(KVTagLib::digestOfSoundHead(path), before) << sound;
        const CString text = qo::fromSystemPath(here.dir.write("text", sound));
        EXPECT_NE(KVTagLib::digestOfSoundHead(text), before) << sound;
    }
    EXPECT_FALSE(KVTagLib::digestOfSoundHead(here.dir.collPath("nothing")).has_value());
}
