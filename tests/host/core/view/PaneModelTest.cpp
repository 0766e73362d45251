#include "core/view/PaneModel.h"

#include "UserView/ViewText.h"
#include "core/collection/CollectionChanges.h"
#include "core/collection/CollectionFiles.h"
#include "core/store/HostStore.h"
#include "core/view/Marks.h"
#include "host/core/LoadedCollection.h"

#include <QoKernel/Tags.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <random>

using namespace qo::host;
namespace fs = std::filesystem;

namespace
{
using View = CUVViewHelper;

/// A collection of small real files that changes at random, and panes that follow it.
class RandomPanes
{
public:
    explicit RandomPanes(unsigned seed) : m_random(seed)
    {
        for (int i = 0; i < tagged; ++i)
            makeTemplate(i);
        for (int i = 0; i < 12; ++i)
            place(i);
        m_files.load();
        m_files.run([&] { m_panes.emplace(View::leftArtists, View::rightFiles, m_filter); });
    }
    ~RandomPanes()
    {
        m_files.run([&] { m_panes.reset(); });
        m_files.run([] { CQoCollSubset::setFilterInfo(u"", CQoCollSubset::filterAll, {}); });
    }

    void changeSomething()
    {
        m_files.run(
            [&]
            {
                switch (upTo(9))
                {
                case 0:
                    m_panes->show(oneOf(lefts), upTo(2) == 0 ? View::rightFiles : View::rightTree);
                    break;
                case 1:
                    m_filter.text = oneOf(texts);
                    m_filter.shown.m_showTypes = upTo(3) == 0 ? CQoUtils::ShowFilterInfo::ST_Audio
                                                              : CQoUtils::ShowFilterInfo::showAll;
                    m_panes->setFilter(m_filter);
                    break;
                case 2:
                    m_panes->selectLeft(randomItem(m_panes->left()));
                    break;
                case 3:
                    m_panes->selectMiddle(randomItem(m_panes->middle()));
                    break;
                case 4:
                    if (PaneModel::Item* const item = randomItem(m_panes->middle()))
                        m_panes->setMark(*item, upTo(2) == 0);
                    break;
                default:
                    changeFile();
                }
            });
    }

    /// Another model with the same selection shows the same.
    void expectAsBuiltAnew(unsigned step)
    {
        m_files.run(
            [&]
            {
                PaneModel anew(m_panes->leftView(), m_panes->rightView(), m_filter);
                select(anew);
                ASSERT_EQ(textOf(m_panes->left(), true), textOf(anew.left(), true)) << step;
                ASSERT_EQ(textOf(m_panes->middle(), true), textOf(anew.middle(), true)) << step;
                ASSERT_EQ(textOf(m_panes->right(), true), textOf(anew.right(), true)) << step;
            });
    }

private:
    static constexpr int tagged = 8;
    static constexpr View::EViewType lefts[] = {
        View::leftArtists, View::leftGenreArtists, View::leftGenres, View::leftDirs};
    static constexpr const char16_t* texts[] = {u"", u"", u"ab", u"go", u"zz"};

    int upTo(int end) { return std::uniform_int_distribution<int>(0, end - 1)(m_random); }
    template <class T, std::size_t n>
    T oneOf(const T (&list)[n])
    {
        return list[upTo(int(n))];
    }

    void makeTemplate(int index)
    {
        static constexpr const char16_t* artists[] = {u"ABBA", u"Abel", u"", u"Zoo"};
        static constexpr const char16_t* albums[] = {u"Gold", u"", u"Go"};
        static constexpr const char16_t* genres[] = {u"Pop", u"Rock", u""};
        const CString path = m_files.addSound("templates/" + std::to_string(index) + ".mp3");
        m_files.run(
            [&]
            {
                CMusicTagEx tag;
                ASSERT_TRUE(tag.readTag(path));
                set(tag, CTagAttrib::AT_Artist, artists[index % 4]);
                set(tag, CTagAttrib::AT_Album, albums[index % 3]);
                set(tag, CTagAttrib::AT_Genre, genres[index / 3]);
                set(tag,
                    CTagAttrib::AT_Year,
                    u"197" + CString(static_cast<char16_t>(u'0' + index)));
                ASSERT_TRUE(tag.writeTag(path));
            });
    }
    static void set(CMusicTagEx& tag, CTagAttrib::EAttribType type, const CString& value)
    {
        tag.getAttrib(type)->setValue(CTagAttribValue::SV_Edited, value, true);
    }
    std::string nameOf(int file) const
    {
        static constexpr const char* folders[] = {"a", "a/b", "c"};
        return std::string("music/") + folders[file % 3] + "/" + std::to_string(file) +
               (file % 5 == 4 ? ".jpg" : ".mp3");
    }
    void place(int file)
    {
        const fs::path target = m_files.dir.path(nameOf(file));
        fs::create_directories(target.parent_path());
        if (target.extension() == ".jpg")
            m_files.dir.write(nameOf(file), "picture");
        else
            fs::copy_file(m_files.dir.path("templates/" + std::to_string(upTo(tagged)) + ".mp3"),
                          target,
                          fs::copy_options::overwrite_existing);
        // Each version is newer than the one before.
        m_time += std::chrono::seconds(10);
        fs::last_write_time(target, m_time);
    }
    /// Adds a file, replaces it by one with other tags, moves it or takes it away.
    void changeFile()
    {
        const int file = upTo(20);
        const CString path = m_files.dir.collPath(nameOf(file));
        CollectionChanges changes(*m_files.session, true);
        const bool isThere = CollectionChanges::recordOf(path) != nullptr;
        const int other = upTo(20);
        if (!isThere || upTo(3) == 0)
        {
            place(file);
            changes.scan(path);
        }
        else if (upTo(2) == 0)
        {
            fs::remove(m_files.dir.path(nameOf(file)));
            changes.remove(path);
        }
        else if (file % 5 != 4 && other % 5 != 4 &&
                 !CollectionChanges::recordOf(m_files.dir.collPath(nameOf(other))))
        {
            fs::create_directories(fs::path(m_files.dir.path(nameOf(other))).parent_path());
            fs::rename(m_files.dir.path(nameOf(file)), m_files.dir.path(nameOf(other)));
            changes.move(path, m_files.dir.collPath(nameOf(other)), false);
        }
        if (!changes.isEmpty())
            changes.apply(*m_files.progress);
    }
    PaneModel::Item* randomItem(const PaneModel::Items& items)
    {
        PaneModel::Item* item = nullptr;
        for (const PaneModel::Items* level = &items; !level->IsEmpty() && (!item || upTo(2) == 0);
             level = &item->getSubItems())
            item = (*level)[upTo(level->GetSize())];
        return item;
    }
    static PaneModel::Item* sameItem(const PaneModel::Items& items, const PaneModel::Item* wanted)
    {
        for (PaneModel::Item* const item : items)
        {
            const auto* const parent = item->getParent();
            const bool isSame =
                item->isEqual(wanted) && (!parent || parent->isEqual(wanted->getParent()));
            if (isSame)
                return item;
            if (PaneModel::Item* const below = sameItem(item->getSubItems(), wanted))
                return below;
        }
        return nullptr;
    }
    void select(PaneModel& anew) const
    {
        if (m_panes->selectedLeft())
            anew.selectLeft(sameItem(anew.left(), m_panes->selectedLeft()));
        if (m_panes->selectedMiddle())
            anew.selectMiddle(sameItem(anew.middle(), m_panes->selectedMiddle()));
    }

    LoadedCollection m_files;
    std::mt19937 m_random;
    fs::file_time_type m_time = fs::file_time_type::clock::now() - std::chrono::hours(10);
    PaneModel::Filter m_filter;
    std::optional<PaneModel> m_panes;
};
} // namespace

TEST(PaneModel, ShowsAfterEachChangeWhatPanesBuiltAnewShow)
{
    for (unsigned seed = 13; seed <= 15; ++seed)
    {
        RandomPanes panes(seed);
        for (unsigned step = 0; step < 150; ++step)
        {
            panes.changeSomething();
            panes.expectAsBuiltAnew(step);
            if (testing::Test::HasFatalFailure())
                return;
        }
    }
}

TEST(PaneModel, FindsItemsByTheirNamesAndKeepsTheSelectionUnderAFilter)
{
    const LoadedCollection files;
    files.addSound("music/a/1.mp3");
    files.addSound("music/a/b/22.mp3");
    files.load();
    files.run(
        [&]
        {
            PaneModel panes(View::leftDirs, View::rightFiles, {});
            const std::string root = files.dir.path("music");
            PaneModel::Item* const b = PaneModel::find(panes.left(), root + "/A/b");
            ASSERT_TRUE(b);
            EXPECT_EQ(b, PaneModel::find(panes.left(), "music/a/b"));
            EXPECT_FALSE(PaneModel::find(panes.left(), root + "/a/c"));
            panes.selectLeft(b);
            EXPECT_EQ(textOf(panes.right()), "22.mp3 1+0");
            PaneModel::Filter filter;
            filter.text = u"22";
            panes.setFilter(filter);
            ASSERT_TRUE(panes.selectedLeft());
            EXPECT_EQ(panes.selectedLeft()->getName(), u"b");
            filter.text = u"nothing";
            panes.setFilter(filter);
            EXPECT_FALSE(panes.selectedLeft());
            EXPECT_EQ(textOf(panes.left()), "");
            panes.setFilter({});
        });
}

TEST(Marks, LastByTheIdsOfFilesAndFollowMoves)
{
    const LoadedCollection files;
    const CString one = files.addSound("music/1.mp3");
    files.addSound("music/2.mp3");
    files.load();
    files.run(
        [&]
        {
            PaneModel panes(View::leftDirs, View::rightFiles, {});
            panes.selectLeft(panes.left()[0]);
            panes.setMark(*PaneModel::find(panes.right(), "1.mp3"), true);
            EXPECT_EQ(panes.left()[0]->getCheckState(), CQoCheckState::CS_Mixed);
            keepMarks();
        });
    const auto before = files.records();
    files.carryOut("mv",
                   [&](FileMoves& moves) { moves.move(one, files.dir.collPath("music/3.mp3")); });
    files.load(false);
    files.run(
        [&]
        {
            EXPECT_EQ(markedFiles().files, 0);
            applyMarks();
            EXPECT_EQ(markedFiles().files, 1);
            EXPECT_EQ(markedFiles().music, 1);
            EXPECT_GT(markedFiles().size, 0);
            const auto ids = HostStore(Session::folder()).checkedFiles();
            ASSERT_EQ(ids.size(), 1U);
            EXPECT_EQ(qo::toUtf8(*ids.begin()), before.at("music/1.mp3"));
            HostStore(Session::folder()).clearChecked();
            applyMarks();
            EXPECT_EQ(markedFiles().files, 0);
        });
}
