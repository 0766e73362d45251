#include "Analyze/Folder.h"
#include "Analyze/MaxPercent.h"
#include "Analyze/NSAnalyzer.h"
#include "Analyze/NSDirMusicFilesInfo.h"
#include "Analyze/NSNamePattern.h"
#include "Analyze/NSUtils.h"
#include "Physical/HDMusicFile.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

/// The rules of the analysis worked out value by value and file by file.
namespace plain
{
using Dir = boost::shared_ptr<CHDDirectory>;
using File = boost::shared_ptr<CHDFile>;
using Info = CNSDirMusicFilesInfo;
using MusicFile = boost::shared_ptr<CHDMusicFile>;

void detectUnrelatedAssocs(const Dir& directory, CMapStringToPtr& store)
{
    CNSAnalyzer::ObjectList children;
    for (const Dir& subDir : directory->getSubDirs())
    {
        detectUnrelatedAssocs(subDir, store);
        children.add(subDir);
    }
    for (const File& file : directory->getFiles())
        children.add(file);
    CNSAnalyzer::AssocMap accepted;
    for (const CLTObjectType::EType type : CNSUtils::m_ltAssocsTypes)
    {
        for (const auto& child : children)
        {
            const CString value = CNSAnalyzer::getHDObjectAssoc(child, type, store);
            if (!value.IsEmpty() &&
                !CNSAnalyzer::findContradictingAssocs(type, value, children, child, store) &&
                CNSAnalyzer::isUnrelAssocAccepted(type, value, children, store))
                accepted[type] = value;
        }
    }
    if (!accepted.PLookup(CLTObjectType::Artist))
    {
        accepted.RemoveKey(CLTObjectType::Track);
        accepted.RemoveKey(CLTObjectType::Album);
    }
    for (const auto& child : children)
        CNSAnalyzer::setHDObjectAssoc(child, accepted, store);
}

int compareTitles(const MusicFile& a, const MusicFile& b)
{
    return a->getFileTitle().CompareNoCase(b->getFileTitle());
}

/// No order, so the way of the search matters.
int compareNames(const File& file, const MusicFile& music)
{
    const CString title = file->getFileTitle();
    const int order = title.CompareNoCase(music->getFileTitle());
    return title.CompareNoCase(music->getFileTitle() + u"." + music->getExt()) == 0 ? 0 : order;
}

File bestMusicFile(const File& file, const Dir& directory, const Info& info)
{
    Info::FileList byTitle;
    for (const File& each : directory->getFiles())
    {
        if (each->getFileType() == CHDFile::FT_Music)
            byTitle.addSorted(boost::static_pointer_cast<CHDMusicFile>(each), compareTitles, false);
    }
    int index = 0;
    if (byTitle.findByKey(file, 0, byTitle.GetSize(), compareNames, index))
        return byTitle[index];
    std::vector<CNSAtom::EType> types{CNSAtom::Album, CNSAtom::Artist};
    if (file->getFileType() == CHDFile::FT_Text)
        types.insert(types.begin(), CNSAtom::Track);
    if (file->getFileType() == CHDFile::FT_Other)
        types.push_back(CNSAtom::Track);
    Info::FileList matching;
    for (const CNSAtom::EType type : types)
    {
        Info::FileList next;
        for (const CString& value : info.getValuesInOrder(type))
        {
            CNSNamePattern name;
            name.setAtom(CNSAtom::FixedString, file->getFileTitle());
            void* files = nullptr;
            if (!CNSAnalyzer::refinePatternWithAtom(name, type, value, true, false, true) ||
                !info.getAtomValues(type)->Lookup(value, files))
                continue;
            for (const MusicFile& each : *static_cast<Info::FileList*>(files))
            {
                if (matching.IsEmpty() ||
                    matching.findBinary(each, 0, matching.GetSize(), compareTitles, index))
                    next.addSorted(each, compareTitles, true);
            }
        }
        if (!next.IsEmpty())
            matching = next;
    }
    return matching.IsEmpty() ? File() : File(matching[0]);
}

void placeFiles(const Dir& directory)
{
    for (const Dir& subDir : directory->getSubDirs())
        placeFiles(subDir);
    Info info;
    info.addMusicFilesOf(*directory);
    for (const File& file : directory->getFiles())
    {
        if (file->getFileType() == CHDFile::FT_Music || file->getFileTitle().IsEmpty())
            continue;
        const File best = bestMusicFile(file, directory, info);
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
            for (const CString& field :
                 {item.path.text(), item.artist, item.album, item.title, item.genre})
                text += field + u" | ";
            text.AppendFormat(u"%d\n", item.dbState);
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
        static constexpr const char16_t* extensions[] = {u"mp3", u"flac", u"jpg", u"txt", u"dat"};
        const int varieties[] = {below(3), below(3), below(4) == 0, below(3)};
        CString name;
        for (int left = below(18); left > 0; --left)
        {
            QoFileDbItem item =
                Folder::record(value(varieties[0]), value(varieties[1]), value(varieties[2]));
            item.genre = value(varieties[3]);
            item.trackNumber = u"1";
            item.dbState = below(2);
            // Titles come more than once, with different extensions, and some names have none.
            if (below(3) > 0)
                name = below(20) == 0 ? CString()
                                      : pieces(4) + (below(3) == 0 ? u"ab" : u"x") + pieces(2);
            Folder::addFile(parent, name + u"." + extensions[below(5)], item);
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
    int spread = 0;
    int placed = 0;
    for (const char16_t* percent : {u"20", u"0", u"60", u"100"})
    {
        const MaxPercent setting(percent);
        for (unsigned seed = 0; seed < 250; ++seed)
        {
            const RandomTree tree(seed);
            const RandomTree expected(seed);
            const CString before = tree.toText();
            CMapStringToPtr store;
            plain::detectUnrelatedAssocs(expected.dir(), store);
            CNSAnalyzer::clearAssocStore(store);
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
