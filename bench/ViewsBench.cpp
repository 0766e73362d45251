#include "Logical/LTArtist.h"
#include "Logical/LTManager.h"
#include "Physical/HDDirectory.h"
#include "Physical/HDFile.h"
#include "QoColl/Collection/QoCollection.h"
#include "QoColl/Collection/subsets/QoCheckHelper.h"
#include "QoColl/Collection/subsets/QoCollSubset.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "UserView/UVViewHelper.h"
#include "common/QoProgress.h"

#include <boost/make_shared.hpp>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <functional>
#include <random>
#include <string>
#include <vector>

// bench_views [FILES]: subsets, panes and marks over a collection in memory, each beside the floor:
// a bare loop that looks at every folded name once. Prints milliseconds and the ratio.
namespace
{
using View = CUVViewHelper;
using File = CQoUtils::File;

struct Open : CQoCollection
{
    using CQoCollection::createColl;
};

/// Albums of twelve tracks, two per artist, in a folder each; a tenth of the files has no artist.
void buildCollection(int files)
{
    CQoCollection::initGlobal();
    CStringArray roots;
    roots.Add(u"C:\\music");
    CQoCollection& collection = CQoCollection::m_ownCollection;
    collection.addRootDirs(roots, CQoPathsInfoMap());
    static constexpr const char16_t* words[] = {u"love",
                                                u"night",
                                                u"Beat",
                                                u"the",
                                                u"live",
                                                u"road",
                                                u"blue",
                                                u"Sun",
                                                u"bear",
                                                u"gold",
                                                u"rain",
                                                u"dance"};
    std::mt19937 random(1);
    // A letter after each word makes many words of few.
    const auto word = [&]
    {
        CString text = words[random() % std::size(words)];
        text += static_cast<char16_t>(u'a' + random() % 26);
        return random() % 26 == 0 ? text + u"q" : text;
    };
    QoFileDbItemArray items;
    for (int i = 0; i < files; ++i)
    {
        const int album = i / 12;
        const auto item = boost::make_shared<QoFileDbItem>();
        if (i % 10 != 0)
            item->artist.Format(u"%s artist %05d", words[album / 2 % 12], album / 2);
        item->album.Format(u"%s album %05d", words[album % 12], album);
        item->title.Format(u"%s %s in the %s", word(), word(), word());
        item->genre.Format(u"Genre %d", album % 40);
        item->trackNumber.Format(u"%d", i % 12 + 1);
        CString path;
        path.Format(
            u"C:\\music\\%03d\\%05d\\%02d %s.mp3", album / 50, album, i % 12 + 1, item->title);
        item->path = path;
        item->dbState = qo::dbState::added;
        items.Add(item);
    }
    CDummyProgress progress;
    (collection.*&Open::createColl)(items, {}, &progress);
}

double medianOf(const std::function<void()>& prepare, const std::function<void()>& work)
{
    constexpr int rounds = 11;
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i)
    {
        prepare();
        const auto start = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double, std::milli> took =
            std::chrono::steady_clock::now() - start;
        times.push_back(took.count());
    }
    std::sort(times.begin(), times.end());
    return times[rounds / 2];
}

/// The time for looking at the folded names of all files, in the order of the files.
double measureFloor(const CQoUtils::Files& files)
{
    std::vector<std::array<std::u16string, 5>> names;
    for (const File& file : files)
    {
        const QoFileDbItem& item = *file->getDbItem();
        std::array<std::u16string, 5> folded;
        int i = 0;
        for (CString name : {item.genre, item.artist, item.album, item.title, file->getFileTitle()})
            folded[i++] = name.MakeLower().view();
        names.push_back(std::move(folded));
    }
    static volatile int found = 0;
    const auto look = [&]
    {
        for (const auto& each : names)
        {
            for (const std::u16string& name : each)
                found = found + (name.find(u" bea") != std::u16string::npos);
        }
    };
    return medianOf([] {}, look);
}

class Report
{
public:
    explicit Report(double floor) : m_floor(floor)
    {
        std::printf("%-34s %9.3f ms\n", "floor", floor);
    }
    void row(const char* what, double must, double took) const
    {
        std::printf("%-34s %9.3f ms  %7.4f x floor (must %g)\n", what, took, took / m_floor, must);
    }

private:
    double m_floor;
};

void setText(const char16_t* text)
{
    CQoCollSubset::setFilterInfo(text, CQoCollSubset::filterAll, {});
}

void measureSubsets(const Report& report)
{
    const auto anew = []
    {
        CQoCollSubset::refreshSubsets();
        CQoCollSubset::getCrtSubset();
    };
    report.row(
        "full subset anew",
        6,
        medianOf([] { CQoCollSubset::refreshSubsets(); }, [] { CQoCollSubset::getCrtSubset(); }));
    report.row("first text filter",
               4,
               medianOf(anew,
                        []
                        {
                            setText(u"be");
                            setText(u"");
                        }));
    anew();
    const struct
    {
        const char* name;
        const char16_t *other, *start, *longer;
    } texts[] = {{"half of the files", u"da", u"be", u"bea"},
                 {"one file of fifty", u"goldx", u"goldk", u"goldkq"}};
    for (const auto& each : texts)
    {
        const auto set = [&](const char16_t* text) { return [text] { setText(text); }; };
        std::printf("%s:\n", each.name);
        report.row("new text filter", 4, medianOf(set(each.other), set(each.start)));
        report.row("one more letter", 1, medianOf(set(each.start), set(each.longer)));
    }
    setText(u"");
}

void measurePanes(const Report& report)
{
    const CQoCollSubset& subset = CQoCollSubset::getCrtSubset();
    const std::pair<const char*, View::EViewType> kinds[] = {
        {"left pane: artists", View::leftArtists},
        {"left pane: genres with artists", View::leftGenreArtists},
        {"left pane: genres", View::leftGenres},
        {"left pane: directories", View::leftDirs}};
    for (const auto& [name, type] : kinds)
    {
        CUVViewItemList items;
        const View::EViewType kind = type;
        report.row(name,
                   4,
                   medianOf([&] { items.clear(); },
                            [&] { View::getLeftViewItems(kind, subset, items, nullptr); }));
    }
}

/// The file leaves and joins all subsets and three panes that show its artist.
void measureOneFile(const Report& report, const File& file)
{
    setText(u"artist");
    const CQoCollSubset& subset = CQoCollSubset::getCrtSubset();
    CUVViewItemList left;
    CUVViewItemList middle;
    CUVViewItemList right;
    View::getLeftViewItems(View::leftArtists, subset, left, nullptr);
    CUVViewItem* const selected = View::getArtistItem(
        left, boost::static_pointer_cast<CLTArtist>(file->getLTAssoc(CLTObjectType::Artist)));
    View::EViewType middleType = View::viewNone;
    const auto build = [&](AddFileInfo* add)
    {
        View::getLeftViewItems(View::leftArtists, subset, left, add);
        View::getMiddleViewItems(selected, View::leftArtists, middleType, subset, middle, add);
        View::getRightViewItems(selected, nullptr, View::rightTree, subset, right, add);
    };
    View::getMiddleViewItems(selected, View::leftArtists, middleType, subset, middle, nullptr);
    View::getRightViewItems(selected, nullptr, View::rightTree, subset, right, nullptr);
    CQoUtils::Files added;
    added.add(file);
    const auto remove = [&]
    {
        CQoCollSubset::removeFile(file);
        RemoveFileInfo info(file);
        View::removeItems(subset, selected, nullptr, &left, &middle, &right, info);
    };
    const auto add = [&]
    {
        CQoCollSubset::refreshSubsets(added);
        AddFileInfo info(file);
        build(&info);
    };
    report.row("one removed file", 0.02, medianOf(add, remove));
    report.row("one added file", 0.02, medianOf(remove, add));
    setText(u"");
}

void measureMarks(const Report& report)
{
    CPtrListT<CQoCheckObject> roots;
    for (const auto& root : CQoCollection::m_ownCollection.getRootDirs())
        roots.add(root);
    report.row("a mark on everything",
               30,
               medianOf([&] { CQoCheckHelper::setCheckState(roots, CQoCheckState::CS_NotChecked); },
                        [&] { CQoCheckHelper::setCheckState(roots, CQoCheckState::CS_Checked); }));
    CUVViewItemList items;
    report.row("left pane: artists, all marked",
               4,
               medianOf([&] { items.clear(); },
                        [&] {
                            View::getLeftViewItems(
                                View::leftArtists, CQoCollSubset::getCrtSubset(), items, nullptr);
                        }));
}
} // namespace

int main(int argc, char** argv)
{
    buildCollection(argc > 1 ? std::atoi(argv[1]) : 100000);
    CQoUtils::Files files;
    for (const auto& root : CQoCollection::m_ownCollection.getRootDirs())
        root->getAllFiles(files);
    const Report report(measureFloor(files));
    measureSubsets(report);
    measurePanes(report);
    measureOneFile(report, files[files.GetSize() / 2 + 1]);
    measureMarks(report);
    files.clear();
    CQoCollection::cleanUpGlobal();
    return 0;
}
