#include "cli/tags/EncodingCommand.h"

#include "cli/Interrupt.h"
#include "cli/files/FileRecord.h"
#include "cli/files/TagFields.h"
#include "cli/shown/Listing.h"
#include "cli/shown/Text.h"
#include "cli/tags/ChosenMusic.h"
#include "core/base/HostFiles.h"

#include <map>

// Reads the texts of all files, finds the encoding of each album, or else of each file, lists what
// the texts would be in it, and keeps that as edits.

namespace qo::cli
{
namespace
{
using host::PendingTags;

struct EncodingOptions
{
    FileChoice choice;
    std::string charset; ///< "" to find it out
    bool isLong = false;
};

/// The texts of a file that may have been misread.
struct SuspectFile
{
    CString path;
    std::map<const host::FileField*, CString> texts;

    std::vector<CString> all() const
    {
        std::vector<CString> list;
        for (const auto& [field, text] : texts)
            list.push_back(text);
        return list;
    }
};

/// Folder and album: the files of one have one encoding as a rule.
using Album = std::pair<CString, CString>;
using Albums = std::map<Album, std::vector<SuspectFile>>;

void lookAt(const CString& path, const PendingTags& pending, Albums& albums)
{
    KVTagLib::CTags tags(CString(), KVTagLib::TagExtent::everything);
    readFileTag(path, tags);
    SuspectFile file{path, {}};
    const PendingTags::Fields edits = pending.fields(path);
    for (const host::FileField& field : host::tagFields())
    {
        const std::optional<KVTagLib::Field> inTag = fieldInTag(field);
        const CStringArray values = inTag ? tags.GetValues(*inTag) : CStringArray();
        // What was edited is as the user wants it.
        if (!values.IsEmpty() && mayBeMisread(values[0]) && !edits.contains(field.name))
            file.texts.emplace(&field, values[0]);
    }
    if (file.texts.empty())
        return;
    CString album;
    tags.GetAlbum(album);
    albums[{CQoCollPath(path).getParent().toString(), album}].push_back(std::move(file));
}

/// The texts of the files as the encoding reads them, listed and kept as edits.
class Rereading
{
public:
    Rereading(CommandLine& line, const EncodingOptions& options, PendingTags& pending)
        : m_line(line)
        , m_options(options)
        , m_pending(pending)
        , m_listing(line,
                    options.isLong,
                    {"field", "file", "edited", "charset", "path"},
                    {Listing::Column::name,
                     Listing::Column::text,
                     Listing::Column::text,
                     Listing::Column::name,
                     Listing::Column::path})
    {
    }

    void add(const std::vector<SuspectFile>& album)
    {
        if (!m_options.charset.empty())
        {
            for (const SuspectFile& file : album)
                reread(file, m_options.charset);
            return;
        }
        std::vector<CString> texts;
        for (const SuspectFile& file : album)
        {
            const std::vector<CString> own = file.all();
            texts.insert(texts.end(), own.begin(), own.end());
        }
        const std::string common = misreadCharsetOf(texts).charset;
        for (const SuspectFile& file : album)
        {
            // An album of many hands: its files may differ.
            const MisreadGuess own =
                common.empty() ? misreadCharsetOf(file.all()) : MisreadGuess{common, false};
            if (own.isInDoubt)
                m_doubtful.Add(file.path);
            else if (!own.charset.empty())
                reread(file, own.charset);
        }
    }

    ExitCode finish()
    {
        m_listing.finish();
        if (!m_doubtful.IsEmpty())
            m_line.note(host::fileRemark(m_doubtful,
                                         "a file may be misread, --from names its encoding",
                                         "files may be misread, --from names their encoding"));
        if (m_values == 0)
        {
            m_line.note("no text seems to be misread");
            return ExitCode::done;
        }
        if (!m_line.dryRun)
            m_pending.save();
        m_line.note(countText(m_values, "value") + " of " + countText(m_files, "file") +
                    (m_line.dryRun ? " would be edited"
                                   : " edited: \"qo tag show FILE\" shows them, \"qo tag revert "
                                     "FILE\" drops them, \"qo tag write --all\" writes them"));
        return ExitCode::done;
    }

private:
    void reread(const SuspectFile& file, const std::string& charset)
    {
        const std::int64_t before = m_values;
        for (const auto& [field, text] : file.texts)
        {
            const CString read = rereadText(text, charset).Trim();
            if (read.IsEmpty())
                continue;
            ++m_values;
            m_pending.set(file.path, field->name, toUtf8(read));
            list(file.path, *field, text, read, charset);
        }
        m_files += m_values > before ? 1 : 0;
    }

    void list(const CString& path,
              const host::FileField& field,
              const CString& text,
              const CString& read,
              const std::string& charset)
    {
        const std::string shown = host::shownPath(path);
        if (m_listing.isForPeople())
            return m_listing.addCells({field.name, oneLine(text), oneLine(read), charset, shown});
        Json record;
        record["field"] = field.name;
        record["file"] = toUtf8(text);
        record["edited"] = toUtf8(read);
        record["charset"] = charset;
        putPath(record, "path", shown);
        m_listing.addRecord(record, shown);
    }

    CommandLine& m_line;
    const EncodingOptions& m_options;
    PendingTags& m_pending;
    Listing m_listing;
    CStringArray m_doubtful;
    std::int64_t m_values = 0;
    std::int64_t m_files = 0;
};

ExitCode rereadTexts(CommandLine& line,
                     const EncodingOptions& options,
                     const std::vector<CString>& paths,
                     PendingTags& pending)
{
    if (!options.charset.empty() && fromCharset("a", options.charset) != u"a")
        throw HostError(ExitCode::usage, "there is no encoding \"" + options.charset + "\"");
    host::ProgressReporter progress({});
    const InterruptGuard guard(progress);
    Albums albums;
    const ExitCode code =
        forEachOf(paths,
                  [&](const CString& path)
                  {
                      if (progress.isCanceled())
                          throw HostError(ExitCode::interrupted, "stopped: nothing was edited");
                      lookAt(path, pending, albums);
                  });
    Rereading rereading(line, options, pending);
    for (const auto& [album, files] : albums)
        rereading.add(files);
    const ExitCode found = rereading.finish();
    return code == ExitCode::done ? found : code;
}
} // namespace

void setUpEncoding(CommandLine& line, CLI::App& command)
{
    const auto options = std::make_shared<EncodingOptions>();
    line.setAction(command,
                   [&line, options]
                   {
                       return withChosenMusic(
                           line,
                           KernelUse::change,
                           options->choice,
                           [&](ChosenMusic& chosen)
                           { return rereadTexts(line, *options, chosen.paths, chosen.pending); });
                   });
    addMusic(command, options->choice);
    addArgument(command, "--from", options->charset, "The encoding that the texts were written in")
        ->type_name("CHARSET");
    command.add_flag("-l,--long", options->isLong, "Tabs between the columns, with their names");
}
} // namespace qo::cli
