#include "Analyze/NSAnalyzer.h"

#include "Analyze/Folder.h"
#include "Analyze/MaxPercent.h"
#include "Analyze/NSDirMusicFilesInfo.h"
#include "Analyze/NSNamePattern.h"
#include "Analyze/Placement.h"
#include "Physical/HDMusicFile.h"
#include "common/QoProgress.h"
#include "support/DocExample.h"
#include "types/Utf.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

namespace
{
using Lines = std::vector<std::string>;
using qo::toUtf8;

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

Lines toLines(const Folder& folder)
{
    Lines lines;
    for (const auto& file : folder.dir->getFiles())
    {
        const QoFileDbItem& item = *file->getDbItem();
        std::string line = toUtf8(file->getFileName());
        for (const CString* field : {&item.artist, &item.album, &item.title, &item.genre})
            line += field->IsEmpty() ? " |" : " | " + toUtf8(*field);
        lines.push_back(line);
    }
    return lines;
}

Lines toLines(const std::vector<qo::FolderVote>& votes)
{
    Lines lines;
    for (const qo::FolderVote& vote : votes)
    {
        std::string line = toUtf8(CString(CLTObjectType::getTypeName(vote.type))) + ": ";
        if (vote.result == qo::EVoteResult::contradicted)
            line += "contradicted by \"" + toUtf8(vote.contradictingValue) + "\"";
        else if (vote.result == qo::EVoteResult::tooManyWithout)
            line += "too many without ";
        if (vote.result != qo::EVoteResult::contradicted)
            line += "\"" + toUtf8(vote.value) + "\", " + std::to_string(vote.related) + " with, " +
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
        std::string line = toUtf8(placement.file->getFileName()) + " -> ";
        line += placement.musicFile ? toUtf8(placement.musicFile->getFileName()) : "none";
        line += placement.musicFile ? " by" : "";
        line += placement.byExactName ? " its name" : "";
        for (const CNSAtom::EType type : placement.narrowedBy)
            line += " " + toUtf8(CNSAtom::getAtomTypeName(type));
        CString pattern = placement.pattern;
        lines.push_back(line + (pattern.IsEmpty() ? "" : ": ") + toUtf8(pattern.TrimRight()));
    }
    return lines;
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
    const std::vector<qo::FolderVote> votes = qo::explainFolder(folder.dir);
    EXPECT_EQ(toLines(votes), docExampleLines("name-analysis.md", "votes"));
    EXPECT_EQ(votes[0].related + votes[0].unrelated, 5) << "all items, though contradicted";
    CNSAnalyzer::detectUnrelatedAssocs(folder.dir, nullptr);
    EXPECT_EQ(toLines(folder), docExampleLines("name-analysis.md", "folder-agreed"));
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
    const std::tuple<const char16_t*, int, int, bool> rows[] = {
        {u"20", 2, 10, true},
        {u"20", 3, 10, false},
        {u"0", 0, 1, true},
        {u"0", 1, 1000, false},
        {u"100", 1000, 1, true},
        {u"-5", 1, 1000, false},
        {u"900", 5, 0, true},
        {u"50", 1000000000, 1000000000, true}};
    for (const auto& [percent, without, with, accepted] : rows)
    {
        const MaxPercent setting(percent);
        EXPECT_EQ(CNSAnalyzer::isUnrelAssocAccepted(without, with), accepted)
            << toUtf8(CString(percent)) << ' ' << without << ' ' << with;
    }
}

TEST(NSAnalyzer, ACancelEndsAPassAtOnce)
{
    int polls = 0;
    for (bool canceled = true; canceled; ++polls)
    {
        const MaxPercent setting(u"100");
        Folder folder;
        const auto subDir = Folder::addDir(folder.dir, u"sub");
        for (const auto& dir : {subDir, folder.dir})
        {
            for (const char16_t* name : {u"song.mp3", u"tong.mp3"})
                Folder::addFile(dir, name, artistOnly());
            Folder::addFile(dir, u"song.jpg");
        }
        subDir->getFiles()[0]->getDbItem()->album = u"Album";
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
