#include "Analyze/NSAnalyzer.h"

#include "Analyze/Folder.h"
#include "Analyze/MaxPercent.h"
#include "Analyze/NSDirMusicFilesInfo.h"
#include "Analyze/NSNamePattern.h"
#include "Analyze/Placement.h"
#include "Physical/HDMusicFile.h"
#include "common/QoProgress.h"
#include "common/types/Utf.h"
#include "support/DocExample.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

namespace
{
using Lines = std::vector<std::string>;

/// Cancels at one poll, counted from 0, and at none behind it.
class CancelAt : public CDummyProgress
{
public:
    explicit CancelAt(int poll) : m_left(poll) {}
    bool isCanceled() override { return m_left-- == 0; }
    bool wasCanceled() const { return m_left < 0; }
    bool wasAskedAgain() const { return m_left < -1; }

private:
    int m_left;
};

/// Makes the files of a table of the document: name, artist, album, title, genre.
void addTable(Folder& folder, const std::string& tag)
{
    for (const std::string& line : docExampleLines("name-analysis.md", tag))
    {
        CStringArray fields = CStringArray::split(qo::fromUtf8(line), u'|');
        for (CString& field : fields)
            field.Trim();
        fields.SetSize(5);
        QoFileDbItem item = Folder::record(fields[1], fields[2], fields[3]);
        item.genre = fields[4];
        folder.add(fields[0], item);
    }
}

std::string utf8(const CString& text)
{
    return qo::toUtf8(text);
}

Lines toLines(const Folder& folder)
{
    Lines lines;
    for (const auto& file : folder.dir->getFiles())
    {
        const QoFileDbItem& item = *file->getDbItem();
        std::string line = utf8(file->getFileName());
        for (const CString* field : {&item.artist, &item.album, &item.title, &item.genre})
            line += field->IsEmpty() ? " |" : " | " + utf8(*field);
        lines.push_back(line);
    }
    return lines;
}

Lines toLines(const std::vector<qo::FolderVote>& votes)
{
    Lines lines;
    for (const qo::FolderVote& vote : votes)
    {
        std::string line = utf8(CLTObjectType::getTypeName(vote.type)) + ": ";
        if (vote.result == qo::EVoteResult::contradicted)
            line += "contradicted by \"" + utf8(vote.contradictingValue) + "\"";
        else if (vote.result == qo::EVoteResult::tooManyWithout)
            line += "too many without ";
        if (vote.result != qo::EVoteResult::contradicted)
            line += "\"" + utf8(vote.value) + "\", " + std::to_string(vote.related) + " with, " +
                    std::to_string(vote.unrelated) + " without";
        lines.push_back(line);
    }
    return lines;
}

Lines toLines(const std::vector<qo::Placement>& placements)
{
    Lines lines;
    for (const qo::Placement& placement : placements)
    {
        std::string line = utf8(placement.file->getFileName()) + " -> ";
        line += placement.musicFile ? utf8(placement.musicFile->getFileName()) : "none";
        line += placement.musicFile ? " by" : "";
        line += placement.byExactName ? " its name" : "";
        for (const CNSAtom::EType type : placement.narrowedBy)
            line += " " + utf8(CNSAtom::getAtomTypeName(type));
        CString pattern = placement.pattern;
        lines.push_back(line + (pattern.IsEmpty() ? "" : ": ") + utf8(pattern.TrimRight()));
    }
    return lines;
}

/// The artist that a file of that name finds beside one song.
CString foundArtist(const CString& name, const QoFileDbItem& song, const CString& songName)
{
    Folder folder;
    folder.add(songName, song);
    const auto file = folder.add(name);
    CNSAnalyzer::createOtherNamePatternsAndLTObjects(folder.dir, nullptr);
    EXPECT_EQ(file->getDbItem()->dbState, file->getDbItem()->artist.IsEmpty() ? 0 : 2);
    EXPECT_TRUE(file->getDbItem()->title.IsEmpty());
    return file->getDbItem()->artist;
}

QoFileDbItem artistOnly()
{
    return Folder::record(u"Artist", u"");
}
} // namespace

TEST(NSAnalyzer, FindsThePlacesThatTheDocumentShows)
{
    Folder folder;
    addTable(folder, "folder-places");
    EXPECT_EQ(toLines(qo::explainPlacements(folder.dir)),
              docExampleLines("name-analysis.md", "placements"));
}

TEST(NSAnalyzer, SpreadsWhatTheDocumentShows)
{
    Folder folder;
    addTable(folder, "folder-agreeing");
    EXPECT_EQ(toLines(qo::explainFolder(folder.dir)), docExampleLines("name-analysis.md", "votes"));
    CNSAnalyzer::detectUnrelatedAssocs(folder.dir, nullptr);
    EXPECT_EQ(toLines(folder), docExampleLines("name-analysis.md", "folder-agreed"));
}

TEST(NSAnalyzer, MatchesNamesByTheTableOfTheirKind)
{
    const QoFileDbItem covers = Folder::record(u"Artist", u"Cover Versions", u"Yesterday");
    const std::tuple<const char16_t*, const char16_t*, bool> rows[] = {
        {u"cover.jpg", u"song.mp3", false},
        {u"Cover Versions front.jpg", u"song.mp3", true},
        {u"yesterday.txt", u"01 Yesterday.mp3", true},
        {u"yesterday.dat", u"01 Yesterday.mp3", true},
        {u"Yesterday.jpg", u"01 Yesterday.mp3", false},
        {u"SONG.jpg", u"song.mp3", true},
        {u"song.mp3.txt", u"song.mp3", true},
        {u"song.flac.txt", u"song.mp3", false},
        {u".txt", u"song.mp3", false}};
    for (const auto& [name, song, found] : rows)
        EXPECT_EQ(foundArtist(name, covers, song), found ? u"Artist" : u"") << utf8(name);
}

TEST(NSAnalyzer, MaskJoinsTheNumbersOfTheTypesFound)
{
    Folder folder;
    QoFileDbItem record = Folder::record(u"Artist", u"Album", u"Title");
    record.trackNumber = u"3";
    folder.add(u"song.mp3", record);
    const auto text = folder.add(u"x.txt");
    CNSDirMusicFilesInfo info;
    info.addMusicFilesOf(*folder.dir);
    CNSNamePattern pattern;
    pattern.setAtom(CNSAtom::FixedString, u"03 Title by Artist");
    boost::shared_ptr<CHDMusicFile> best;
    CNSNamePattern refined;
    int mask = -1;
    CNSAnalyzer::getBestMusicFileMatch(text, pattern, info, best, refined, mask);
    EXPECT_EQ(mask, CNSAtom::Track | CNSAtom::Artist | CNSAtom::TrackNumber);
    EXPECT_EQ(refined.toString(false), u"[TrackNumber] [Track] by [Artist]");
}

TEST(NSAnalyzer, AcceptsAValueByTheShareOfItemsWithoutIt)
{
    struct Row
    {
        const char16_t* percent;
        int without;
        int with;
        bool accepted;
    };
    for (const Row& row : {Row{u"20", 2, 10, true},
                           Row{u"20", 3, 10, false},
                           Row{u"0", 0, 1, true},
                           Row{u"0", 1, 1000, false},
                           Row{u"100", 1000, 1, true},
                           Row{u"-5", 1, 1000, false},
                           Row{u"900", 5, 0, true},
                           Row{u"50", 1000000000, 1000000000, true}})
    {
        const MaxPercent setting(row.percent);
        EXPECT_EQ(CNSAnalyzer::isUnrelAssocAccepted(row.without, row.with), row.accepted)
            << utf8(row.percent) << ' ' << row.without << ' ' << row.with;
    }
}

TEST(NSAnalyzer, AnExplainedVoteCountsAllItemsThoughContradicted)
{
    Folder folder;
    for (const char16_t* artist : {u"A", u"B", u"", u"C"})
        folder.add(CString(artist) + u" song.mp3", Folder::record(artist, u""));
    const qo::FolderVote vote = qo::explainFolder(folder.dir)[2];
    EXPECT_EQ(vote.type, CLTObjectType::Artist);
    EXPECT_EQ(vote.result, qo::EVoteResult::contradicted);
    EXPECT_EQ(vote.related, 1);
    EXPECT_EQ(vote.unrelated, 3);
}

TEST(NSAnalyzer, ACancelEndsAPassAtOnce)
{
    const auto fill = [](Folder& folder)
    {
        const auto subDir = Folder::addDir(folder.dir, u"sub");
        for (const auto& dir : {subDir, folder.dir})
        {
            Folder::addFile(dir, u"song.mp3", artistOnly());
            Folder::addFile(dir, u"tong.mp3", artistOnly());
            Folder::addFile(dir, u"song.jpg");
        }
        subDir->getFiles()[0]->getDbItem()->album = u"Album";
    };
    int polls = 0;
    for (bool canceled = true; canceled; ++polls)
    {
        const MaxPercent setting(u"100");
        Folder folder;
        fill(folder);
        const Lines before = toLines(folder);
        CancelAt first(polls);
        CNSAnalyzer::detectUnrelatedAssocs(folder.dir, &first);
        canceled = first.wasCanceled();
        EXPECT_EQ(toLines(folder) == before, canceled) << "the upper folder comes last";
        CancelAt second(polls);
        CNSAnalyzer::createOtherNamePatternsAndLTObjects(folder.dir, &second);
        EXPECT_FALSE(first.wasAskedAgain() || second.wasAskedAgain()) << "poll " << polls;
    }
    // One for the sub-folder; then each file, the four types, and each child for each of them.
    EXPECT_EQ(polls - 1, 1 + (3 + 4 + 4 * 3) + (3 + 4 + 4 * 4));
}

TEST(NSAnalyzer, FollowsTreesOfAnyDepth)
{
    constexpr int depth = 20000;
    Folder folder;
    auto dir = folder.dir;
    for (int i = 0; i < depth; ++i)
        dir = CHDDirectory::createDir(CQoCollPath(u"C:\\x"), dir);
    Folder::addFile(dir, u"song.mp3", artistOnly());
    const auto picture = Folder::addFile(dir, u"song.jpg");
    CNSAnalyzer::detectUnrelatedAssocs(folder.dir, nullptr);
    EXPECT_EQ(picture->getDbItem()->artist, u"");
    CNSAnalyzer::createOtherNamePatternsAndLTObjects(folder.dir, nullptr);
    EXPECT_EQ(picture->getDbItem()->artist, u"Artist");
}
