#include "KVTagLib/AudioFile.h"
#include "KVTagLib/AudioFileEditor.h"
#include "KVTagLib/TagChanges.h"
#include "KVTagLib/TagRefusal.h"
#include "KVTagLib/Tags.h"
#include "KVTagLib/sound/AudioRegion.h"
#include "MemoryFile.h"

#include <taglib/tfilestream.h>

#include <string>
#include <string_view>

namespace
{
/// The copy of a file that an editor changes, in memory.
class MemoryStream final : public TagLib::FileStream
{
public:
    explicit MemoryStream(std::string_view bytes)
        : TagLib::FileStream("/dev/null", true), m_bytes(bytes)
    {
    }

    const std::string& bytes() const { return m_bytes; }

    TagLib::ByteVector readBlock(unsigned long length) override
    {
        const std::string_view part =
            std::string_view(m_bytes).substr(std::min(m_at, m_bytes.size()), length);
        m_at += part.size();
        return {part.data(), static_cast<unsigned>(part.size())};
    }
    void writeBlock(const TagLib::ByteVector& data) override
    {
        m_bytes.resize(std::max(m_bytes.size(), m_at + data.size()));
        m_bytes.replace(m_at, data.size(), data.data(), data.size());
        m_at += data.size();
    }
    void insert(const TagLib::ByteVector& data, unsigned long start, unsigned long replace) override
    {
        m_bytes.replace(std::min(start, m_bytes.size()), replace, data.data(), data.size());
    }
    void removeBlock(unsigned long start, unsigned long length) override
    {
        m_bytes.erase(std::min(start, m_bytes.size()), length);
    }
    bool readOnly() const override { return false; }
    bool isOpen() const override { return true; }
    void seek(long offset, Position from) override
    {
        const long base = from == Beginning ? 0
                          : from == Current ? static_cast<long>(m_at)
                                            : static_cast<long>(m_bytes.size());
        m_at = static_cast<std::size_t>(
            std::clamp(base + offset, 0L, static_cast<long>(m_bytes.size())));
    }
    void clear() override {}
    long tell() const override { return static_cast<long>(m_at); }
    long length() override { return static_cast<long>(m_bytes.size()); }
    void truncate(long length) override { m_bytes.resize(static_cast<std::size_t>(length)); }

private:
    std::string m_bytes;
    std::size_t m_at = 0;
};

void edit(MemoryStream& stream, KVTagLib::AudioFormat format, const KVTagLib::TagChanges& changes)
{
    try
    {
        editAudioFile(stream, format, changes);
    }
    catch (const KVTagLib::TagRefusal&)
    {
        // That is an answer.
    }
    catch (const std::exception& exception)
    {
        // TagLib asked for a size that no memory could hold.
        if (KVTagLib::isLackOfMemory(exception))
            throw;
    }
}
} // namespace

/// The first byte chooses the format that the file's name would claim, and what is changed; the
/// rest is the file. What a write does to a file of any kind, but for the disk.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace KVTagLib;
    if (size < 1)
        return 0;
    constexpr int formatCount = static_cast<int>(AudioFormat::trueAudio);
    AudioFileContent content(TagExtent::everything);
    CString error;
    const auto expected = static_cast<AudioFormat>(1 + data[0] % formatCount);
    if (!readAudioFile(
            std::make_unique<MemoryFile>(data + 1, size - 1), expected, content, error) ||
        !content.obstacle.IsEmpty())
        return 0;
    CTags wanted;
    wanted.SetTitle(u"Low Tide");
    wanted.SetTrackNumber(u"3/12");
    wanted.SetYear(data[0] < 128 ? u"2001-05-03" : u"");
    if (data[0] % 2 != 0)
        wanted.SetLyrics(CString(u'x', 3000));
    MemoryStream stream({reinterpret_cast<const char*>(data + 1), size - 1});
    edit(stream, content.format, TagChanges(wanted, content.values));
    // What came out is read as anything else is.
    const std::string& bytes = stream.bytes();
    MemoryFile after(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    static_cast<void>(digestOfSound(after, content.format));
    return 0;
}
