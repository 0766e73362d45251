#include "KVTagLib/sound/AudioRegionReader.h"
#include "KVTagLib/xiph/OggPage.h"

#include <map>

// The sound of an Ogg file. A file is a row of pages of several streams; packets are cut into
// segments of up to 255 bytes, and a segment of less ends its packet. The second packet of the
// first stream is the comment. When the comment grows, packets move to other pages and pages get
// new numbers and checksums, so only the packets count, and of the pages what a player seeks by.

using TagLib::ByteVector;

namespace KVTagLib
{
namespace
{
constexpr std::int64_t commentPacket = 1;
constexpr std::size_t maxStreams = 1000;

/// Adds every packet of every stream except the comment of the first, on whatever pages they are.
class OggSound
{
public:
    explicit OggSound(AudioRegionReader& file) : m_file(file) {}

    bool add()
    {
        std::int64_t at = 0;
        while (at < m_file.size() && m_file.sound() && !m_file.isFull())
        {
            const auto header = OggPageHeader::of(m_file.look(at, OggPageHeader::bytes));
            if (!header)
                break;
            at += OggPageHeader::bytes;
            at = addPage(*header, m_file.look(at, header->segments), at);
            if (m_streams.size() > maxStreams)
                return false;
        }
        m_file.add(at, m_file.size() - at);
        return !m_streams.empty();
    }

private:
    struct Stream
    {
        bool first = false; ///< the stream with the tags
        std::int64_t packet = 0;
        std::int64_t page = -1;
    };

    /// Adds what follows the header of one page; returns where the next one starts.
    std::int64_t addPage(const OggPageHeader& header, const ByteVector& segments, std::int64_t at)
    {
        const bool first = m_streams.empty();
        Stream& stream = m_streams.try_emplace(header.serial, Stream{first}).first->second;
        bool hasComment = false;
        at += segments.size();
        for (unsigned i = 0; i < segments.size(); ++i)
        {
            const int length = static_cast<unsigned char>(segments.data()[i]);
            const bool isComment = stream.first && stream.packet == commentPacket;
            hasComment = hasComment || isComment;
            if (!isComment)
                m_file.add(at, length);
            at += length;
            if (length == 255)
                continue;
            m_file.addNumber(++stream.packet);
        }
        if (!hasComment)
            addPlace(header, header.number - stream.page);
        stream.page = header.number;
        return at;
    }

    /// Adds what a player seeks by: the time at the end of the page, whether the page starts or
    /// ends its stream, and the step in page numbers. Pages of headers have no time and may be cut
    /// differently.
    void addPlace(const OggPageHeader& header, std::int64_t step)
    {
        if (header.time <= 0)
            return;
        m_file.addNumber(header.serial);
        m_file.addNumber(header.time);
        m_file.addNumber(header.flags);
        m_file.addNumber(step);
    }

    AudioRegionReader& m_file;
    std::map<unsigned, Stream> m_streams;
};
} // namespace

bool addOggSound(AudioRegionReader& file)
{
    return OggSound(file).add();
}
} // namespace KVTagLib
