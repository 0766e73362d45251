#include "cli/CommandLine.h"
#include "cli/KernelCommand.h"
#include "cli/files/FileChoice.h"
#include "cli/files/FileRecord.h"
#include "cli/music/LyricsText.h"
#include "core/base/HostFiles.h"

#include <QoKernel/Analysis.h>
#include <QoKernel/Logical.h>
#include <QoKernel/Physical.h>
#include <QoKernel/Tags.h>

#include <algorithm>

namespace qo::cli
{
namespace
{
using host::Session;

/// The words of a song and where they stand.
struct Lyrics
{
    const char* source;
    std::string path;
    CString text;
};

class LyricsOfTrack
{
public:
    explicit LyricsOfTrack(const QoFileDbItemPtr& record) : m_record(record) {}

    /// Each text once: a record has its lyrics from the tag as a rule.
    std::vector<Lyrics> find()
    {
        addFromTag();
        addFromRecord();
        const auto file = CQoCollection::m_ownCollection.getFileByPath(m_record->path);
        if (file && file->getFileType() == CHDFile::FT_Text)
            addFile(*file);
        if (const auto music = boost::dynamic_pointer_cast<CHDMusicFile>(file))
            addFromTree(music);
        return std::move(m_found);
    }
    /// Sentences about what could not be read.
    const std::vector<std::string>& problems() const { return m_problems; }

private:
    void add(const char* source, const CString& path, const CString& text)
    {
        const bool isKnown = std::any_of(
            m_found.begin(), m_found.end(), [&](const Lyrics& each) { return each.text == text; });
        if (!text.IsEmpty() && !isKnown)
            m_found.push_back({source, host::shownPath(path), text});
    }

    void addFromTag()
    {
        CMusicTagEx tag;
        if (CMusicTagEx::fileSupportsTags(m_record->path) && tag.readTag(m_record->path.text()))
            add("tag", m_record->path, tag.getLyrics());
    }
    void addFromRecord()
    {
        QoFileDbItemArray records;
        records.Add(m_record);
        CQoCollDb(Session::databasePath()).getLyrics(records);
        add("collection", m_record->path, m_record->lyrics);
    }
    void addFromTree(const boost::shared_ptr<CHDMusicFile>& music)
    {
        const auto track = music->getTrack();
        if (track)
            addFiles(track->getLyrics());
        addFromFolder(music);
        // Without a text of its own the track gets the text of its album.
        if (!track || !track->getAlbum() || !m_found.empty())
            return;
        for (const auto& lyrics : track->getAlbum()->getLyrics())
        {
            for (const auto& text : lyrics->getFiles())
            {
                if (!isOfOneTrack(text))
                    addFile(*text);
            }
        }
    }
    /// Texts that are named for the track.
    void addFromFolder(const boost::shared_ptr<CHDMusicFile>& music)
    {
        const auto& dir = music->getParentDir();
        if (!dir)
            return;
        for (const Placement& placement : explainPlacements(dir))
        {
            if (placement.musicFile == music && placement.file->getFileType() == CHDFile::FT_Text)
                addFile(*placement.file);
        }
    }
    static bool isOfOneTrack(const boost::shared_ptr<CHDTextFile>& text)
    {
        const auto& dir = text->getParentDir();
        return dir && explainPlacement(text, dir).musicFile;
    }
    void addFiles(const boost::shared_ptr<CLTLyrics>& lyrics)
    {
        if (!lyrics)
            return;
        for (const auto& file : lyrics->getFiles())
            addFile(*file);
    }
    void addFile(const CHDFile& file)
    {
        CString text;
        const std::string problem = readLyricsFile(file.getPath(), text);
        if (!problem.empty())
            m_problems.push_back(host::shownPath(file.getPath()) + " " + problem);
        add("file", file.getPath(), text);
    }

    QoFileDbItemPtr m_record;
    std::vector<Lyrics> m_found;
    std::vector<std::string> m_problems;
};

void print(CommandLine& line, const Lyrics& lyrics, bool withHeading)
{
    if (line.json)
    {
        Json object;
        object["source"] = lyrics.source;
        putPath(object, "path", lyrics.path);
        object["lyrics"] = toUtf8(lyrics.text);
        return line.out.line(dump(object));
    }
    if (withHeading)
        line.out.line(std::string("--- ") + lyrics.source + ": " + harmless(lyrics.path));
    line.out.line(shownLyrics(lyrics.text));
}

void printLyrics(CommandLine& line, const FileChoice& choice)
{
    const QoFileDbItemArray files = chosenSingleFiles(choice, "name one file of it");
    bool any = false;
    for (const QoFileDbItemPtr& item : files)
    {
        LyricsOfTrack lyrics(item);
        const std::vector<Lyrics> all = lyrics.find();
        for (const std::string& problem : lyrics.problems())
            line.note(problem);
        any = any || !all.empty();
        for (const Lyrics& each : all)
            print(line, each, files.GetSize() > 1 || all.size() > 1);
    }
    if (!any)
        throw HostError(ExitCode::notFound,
                        "there are no lyrics for " + (files.GetSize() == 1
                                                          ? host::shownPath(files[0]->path)
                                                          : std::string("any of these files")));
}
} // namespace

void setUpLyrics(CommandLine& line, CLI::App& command)
{
    auto choice = std::make_shared<FileChoice>();
    line.setAction(command,
                   [&line, choice]
                   {
                       const auto session = openKernel(line, KernelUse::look);
                       loadForReading(line, *session);
                       session->kernel().run([&] { printLyrics(line, *choice); });
                       return ExitCode::done;
                   });
    addQuery(command, *choice)->required();
}
} // namespace qo::cli
