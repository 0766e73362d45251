#include "Analyze/Folder.h"
#include "Analyze/MaxPercent.h"
#include "Analyze/NSAnalyzer.h"
#include "Analyze/NSUtils.h"
#include "Physical/HDMusicFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <utility>
#include <vector>

/// The rules of the analysis worked out value by value and file by file.
namespace plain
{
using Dir = boost::shared_ptr<CHDDirectory>;
using File = boost::shared_ptr<CHDFile>;
using Object = boost::shared_ptr<CHDObject>;
using Music = std::vector<File>;
using Decisions = std::map<CString, std::map<int, CString>>;

CString* fieldOf(QoFileDbItem& item, int type)
{
    switch (type)
    {
    case CLTObjectType::Track:
        return &item.title;
    case CLTObjectType::Album:
        return &item.album;
    case CLTObjectType::Artist:
        return &item.artist;
    default:
        return &item.genre;
    }
}

CString& assoc(const Object& object, int type, Decisions& decided)
{
    if (object->isFile())
        return *fieldOf(*static_cast<CHDFile&>(*object).getDbItem(), type);
    return decided[static_cast<CHDDirectory&>(*object).getPath().toString(true)][type];
}

void judge(const std::vector<Object>& children, int maxPercent, Decisions& decided)
{
    std::map<int, CString> accepted;
    for (int type :
         {CLTObjectType::Track, CLTObjectType::Album, CLTObjectType::Artist, CLTObjectType::Genre})
    {
        for (const Object& object : children)
        {
            const CString value = assoc(object, type, decided);
            bool contradicted = value.IsEmpty();
            int related = 0;
            int unrelated = 0;
            for (const Object& other : children)
            {
                const CString theirs = assoc(other, type, decided);
                const bool same = theirs.CompareNoCase(value) == 0;
                contradicted |= other != object && !theirs.IsEmpty() && !same;
                (same ? related : unrelated) += other->getRecItemCount();
            }
            if (!contradicted && unrelated * 100 <= (unrelated + related) * maxPercent)
                accepted[type] = value;
        }
    }
    if (accepted.count(CLTObjectType::Artist) == 0)
    {
        accepted.erase(CLTObjectType::Track);
        accepted.erase(CLTObjectType::Album);
    }
    for (const auto& [type, value] : accepted)
    {
        for (const Object& object : children)
            assoc(object, type, decided) = value;
    }
}

void detectUnrelatedAssocs(const Dir& directory, int maxPercent, Decisions& decided)
{
    std::vector<Object> children;
    for (const Dir& subDir : directory->getSubDirs())
    {
        detectUnrelatedAssocs(subDir, maxPercent, decided);
        children.push_back(subDir);
    }
    children.insert(children.end(), directory->getFiles().begin(), directory->getFiles().end());
    judge(children, maxPercent, decided);
}

bool sameTitle(const File& a, const File& b)
{
    return a->getFileTitle().CompareNoCase(b->getFileTitle()) == 0;
}

void addByTitle(Music& list, const File& file, bool unique)
{
    const auto below = [](const File& a, const File& b)
    { return a->getFileTitle().CompareNoCase(b->getFileTitle()) < 0; };
    const auto place = std::lower_bound(list.begin(), list.end(), file, below);
    if (!unique || place == list.end() || !sameTitle(*place, file))
        list.insert(place, file);
}

int compareNames(const File& file, const File& music)
{
    const CString title = file->getFileTitle();
    const int order = title.CompareNoCase(music->getFileTitle());
    return title.CompareNoCase(music->getFileTitle() + u"." + music->getExt()) == 0 ? 0 : order;
}

/// By halves, and one by one below nine: the comparison is no order, so the way matters.
File findByName(const File& file, const Music& byTitle)
{
    std::size_t low = 0;
    std::size_t high = byTitle.size();
    while (high - low >= 9)
    {
        const std::size_t middle = low + (high - low) / 2;
        const int order = compareNames(file, byTitle[middle]);
        if (order == 0)
            return byTitle[middle];
        (order < 0 ? high : low) = order < 0 ? middle : middle + 1;
    }
    for (; low < high; ++low)
    {
        const int order = compareNames(file, byTitle[low]);
        if (order <= 0)
            return order == 0 ? byTitle[low] : File();
    }
    return {};
}

bool isFound(const CString& value, const CString& name)
{
    CNSUtils::FindStringInfo info;
    info.ignoreExtraChars = true;
    info.maxExtraPercentSearch = info.maxExtraPercentText = 30;
    int pos = 0;
    int len = 0;
    return CNSUtils::findSubstring(value, name, info, pos, len);
}

File bestMusicFile(const File& file, const Music& music)
{
    Music byTitle;
    for (const File& each : music)
        addByTitle(byTitle, each, false);
    if (const File named = findByName(file, byTitle))
        return named;
    std::vector<CNSAtom::EType> types{CNSAtom::Album, CNSAtom::Artist};
    if (file->getFileType() == CHDFile::FT_Text)
        types.insert(types.begin(), CNSAtom::Track);
    if (file->getFileType() == CHDFile::FT_Other)
        types.push_back(CNSAtom::Track);
    Music matching;
    for (const CNSAtom::EType type : types)
    {
        std::vector<std::pair<CString, Music>> values;
        for (const File& each : music)
        {
            CString value;
            if (!each->getAtomValueFromDbFileItem(type, value))
                continue;
            auto entry = std::find_if(values.begin(),
                                      values.end(),
                                      [&](const auto& pair) { return pair.first == value; });
            if (entry == values.end())
                entry = values.insert(values.end(), {value, {}});
            entry->second.push_back(each);
        }
        Music next;
        for (const auto& [value, files] : values)
        {
            for (const File& each : files)
            {
                const bool left = matching.empty() || std::any_of(matching.begin(),
                                                                  matching.end(),
                                                                  [&](const File& one)
                                                                  { return sameTitle(one, each); });
                if (left && isFound(value, file->getFileTitle()))
                    addByTitle(next, each, true);
            }
        }
        if (!next.empty())
            matching = next;
    }
    return matching.empty() ? File() : matching.front();
}

void placeFiles(const Dir& directory)
{
    for (const Dir& subDir : directory->getSubDirs())
        placeFiles(subDir);
    Music music;
    for (const File& file : directory->getFiles())
    {
        if (file->getFileType() == CHDFile::FT_Music)
            music.push_back(file);
    }
    for (const File& file : directory->getFiles())
    {
        if (file->getFileType() == CHDFile::FT_Music || file->getFileTitle().IsEmpty())
            continue;
        const File best = bestMusicFile(file, music);
        if (!best)
            continue;
        bool changed = false;
        for (const auto field : {&QoFileDbItem::artist, &QoFileDbItem::album})
        {
            const CString& value = (*best->getDbItem()).*field;
            if (value.IsEmpty())
                continue;
            changed |= (*file->getDbItem()).*field != value;
            (*file->getDbItem()).*field = value;
        }
        if (changed && file->getDbItem()->dbState != 1)
            file->getDbItem()->dbState = 2;
    }
}
} // namespace plain

namespace
{
/// Small trees from few pieces, so that values meet each other and names in every way.
class RandomTree
{
public:
    explicit RandomTree(unsigned seed) : m_random(seed) { fill(m_folder.dir, 0); }

    const boost::shared_ptr<CHDDirectory>& dir() const { return m_folder.dir; }
    /// All records, by path.
    CString toText() const
    {
        CPtrListT<CHDFile> files;
        dir()->getAllFiles(files);
        CString text;
        for (const auto& file : files)
        {
            const QoFileDbItem& item = *file->getDbItem();
            text.AppendFormat(u"%s | %s | %s | %s | %s | %d\n",
                              item.path,
                              item.artist,
                              item.album,
                              item.title,
                              item.genre,
                              item.dbState);
        }
        return text;
    }

private:
    int below(int count) { return static_cast<int>(m_random() % static_cast<unsigned>(count)); }
    CString pieces(int most)
    {
        static constexpr const char16_t* all[] = {
            u"a", u"A", u"b", u"\u00e9", u"\u00c9", u"1", u"ab", u" ", u".", u"-", u"!", u".mp3"};
        CString text;
        for (int left = below(most + 1); left > 0; --left)
            text += all[below(static_cast<int>(std::size(all)))];
        return text;
    }
    /// Whether a folder knows several values, one, or one in two spellings differs from folder to
    /// folder.
    CString value(int variety)
    {
        if (below(6) == 0)
            return {};
        if (variety == 0)
            return pieces(3);
        return variety == 1 ? u"ab" : below(2) == 0 ? u"a-B" : u"A-b";
    }
    void fill(const boost::shared_ptr<CHDDirectory>& parent, int depth)
    {
        static constexpr const char16_t* extensions[] = {
            u"mp3", u"mp3", u"flac", u"jpg", u"txt", u"txt", u"dat"};
        const int artists = below(3);
        const int albums = below(3);
        const int titles = below(4) == 0 ? 1 : 0;
        const int genres = below(3);
        CString name;
        for (int left = below(18); left > 0; --left)
        {
            QoFileDbItem item = Folder::record(value(artists), value(albums), value(titles));
            item.genre = value(genres);
            item.trackNumber = u"1";
            item.dbState = below(2);
            // Titles come more than once, with different extensions.
            if (name.IsEmpty() || below(3) > 0)
                name = pieces(4) + (below(3) == 0 ? u"ab" : u"x") + pieces(2);
            Folder::addFile(parent, name + u"." + extensions[below(7)], item);
        }
        for (int left = depth < 2 ? below(3) : 0; left > 0; --left)
        {
            name.Format(u"dir%d", left);
            fill(Folder::addDir(parent, name), depth + 1);
        }
    }

    std::mt19937 m_random;
    Folder m_folder;
};
} // namespace

TEST(AnalyzerRules, HoldInRandomFolders)
{
    using Percent = std::pair<const char16_t*, int>;
    int spread = 0;
    int placed = 0;
    for (const auto& [text, percent] :
         {Percent{u"20", 20}, Percent{u"0", 0}, Percent{u"60", 60}, Percent{u"250", 100}})
    {
        const MaxPercent setting(text);
        for (unsigned seed = 0; seed < 250; ++seed)
        {
            const RandomTree tree(seed);
            const RandomTree expected(seed);
            const CString before = tree.toText();
            plain::Decisions decided;
            plain::detectUnrelatedAssocs(expected.dir(), percent, decided);
            CNSAnalyzer::detectUnrelatedAssocs(tree.dir(), nullptr);
            ASSERT_EQ(tree.toText(), expected.toText()) << "first pass, seed " << seed;
            const CString between = tree.toText();
            plain::placeFiles(expected.dir());
            CNSAnalyzer::createOtherNamePatternsAndLTObjects(tree.dir(), nullptr);
            ASSERT_EQ(tree.toText(), expected.toText()) << "second pass, seed " << seed;
            spread += between != before;
            placed += tree.toText() != between;
        }
    }
    EXPECT_GT(spread, 100);
    EXPECT_GT(placed, 500);
}
