#include "KVTagLib/TagsAhead.h"

#include "KVTagLib/AudioFormat.h"
#include "KVTagLib/Tags.h"
#include "KVTagLib/TagsReader.h"
#include "KVTagLib/TagsReaderFactory.h"
#include "platform/AheadPool.h"

namespace KVTagLib
{
namespace
{
struct ReadFile
{
    CTags tags;
    CString error;
    bool isRead = false;
};

std::size_t bytesOf(const CString& text)
{
    return sizeof(char16_t) * static_cast<std::size_t>(text.GetLength());
}

/// What a result takes, so that few files with long lyrics count like many without.
std::size_t bytesOf(const CTags& tags)
{
    std::size_t bytes = sizeof(CTags);
    CString text;
    for (int i = 0; i < fieldCount; ++i)
    {
        if (tags.GetText(static_cast<Field>(i), text))
            bytes += bytesOf(text);
    }
    for (int i = 0; i < fieldCount; ++i)
    {
        const CStringArray values = tags.GetValues(static_cast<Field>(i));
        for (int k = 1; k < values.GetSize(); ++k)
            bytes += bytesOf(values[k]);
    }
    CPictureTag picture;
    for (int i = 0; tags.GetPicture(i, picture); ++i)
        bytes += sizeof(CPictureTag) + bytesOf(picture.GetFacts().description);
    return bytes;
}

std::size_t read(const CString& path, const CString& pictureDir, ReadFile& file)
{
    file.tags = CTags(pictureDir);
    const std::unique_ptr<ITagsReader> reader(CTagsReaderFactory::CreateTagsReader(path));
    file.isRead = reader->Read(file.tags, -1, -1);
    file.error = reader->GetError();
    return bytesOf(file.tags);
}
} // namespace

class TagsAhead::Pool : public qo::AheadPool<ReadFile>
{
    using AheadPool::AheadPool;
};

class TagsAhead::Reader final : public ITagsReader
{
public:
    Reader(TagsAhead& ahead, const CString& path) : m_ahead(ahead), m_path(path) {}

    bool Read(CTags& tags, int, int) override { return m_ahead.take(m_path, tags, m_error); }
    CString GetError() const override { return m_error; }

private:
    TagsAhead& m_ahead;
    const CString m_path;
    CString m_error;
};

TagsAhead::TagsAhead(const std::vector<CString>& files,
                     const CString& pictureDir,
                     std::function<bool()> isStopped,
                     const Limits& limits)
    : m_isStopped(std::move(isStopped))
{
    const int cores = static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
    // A single file is read as soon as it is asked for.
    const bool hasMany = files.size() > 1;
    m_pool = std::make_unique<Pool>([pictureDir](const CString& path, ReadFile& file)
                                    { return read(path, pictureDir, file); },
                                    Pool::Limits{.threads = !hasMany             ? 0
                                                            : limits.threads > 0 ? limits.threads
                                                                                 : cores,
                                                 .grows = hasMany && limits.threads == 0,
                                                 .patience = limits.patience});
    for (const CString& file : files)
    {
        if (formatOfPath(file) != AudioFormat::unknown)
            m_pool->add(file);
    }
}

TagsAhead::~TagsAhead() = default;

ITagsReader* TagsAhead::createTagsReader(const CString& path)
{
    m_hasGivenUp = false;
    return formatOfPath(path) == AudioFormat::unknown
               ? nullptr
               : std::make_unique<Reader>(*this, path).release();
}

bool TagsAhead::take(const CString& path, CTags& tags, CString& error)
{
    ReadFile file;
    const Pool::Outcome outcome = m_pool->take(path, file, m_isStopped);
    m_hasGivenUp = outcome != Pool::Outcome::done;
    error = outcome == Pool::Outcome::givenUp ? u"the disk did not give the file within a minute"
                                              : file.error;
    if (file.isRead)
        tags = std::move(file.tags);
    return file.isRead;
}
} // namespace KVTagLib
