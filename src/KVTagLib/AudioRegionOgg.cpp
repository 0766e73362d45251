#include "KVTagLib/AudioRegionReader.h"

#include <map>

using TagLib::ByteVector;

namespace KVTagLib
{
namespace
{
constexpr std::int64_t pageHeader = 27;
constexpr std::int64_t commentPacket = 1;
constexpr std::size_t maxStreams = 1000;

/// Every packet of every stream but the comment of the first, whatever pages they lie on. Numbers
/// and checksums of pages change with the size of the comment.
class OggSound
{
public:
    explicit OggSound(AudioRegionReader& file) : m_file(file) {}

    bool add()
    {
        std::int64_t at = 0;
        while (at < m_file.size() && m_file.sound() && !m_file.isFull())
        {
            const ByteVector header = m_file.look(at, pageHeader);
            if (header.size() < pageHeader || !header.startsWith("OggS"))
                break;
            const int segments = static_cast<unsigned char>(header[26]);
            at = addPage(header, m_file.look(at + pageHeader, segments), at);
            if (m_streams.size() > maxStreams)
                return false;
        }
        m_file.add(at, m_file.size() - at);
        return !m_streams.empty();
    }

private:
    struct Stream
    {
        bool first = false; ///< the one with the tags
        std::int64_t packet = 0;
        std::int64_t page = -1;
    };

    /// Where the next page starts.
    std::int64_t addPage(const ByteVector& header, const ByteVector& segments, std::int64_t at)
    {
        const unsigned serial = header.toUInt(14U, false);
        const bool first = m_streams.empty();
        Stream& stream = m_streams.try_emplace(serial, Stream{first}).first->second;
        bool hasComment = false;
        at += pageHeader + segments.size();
        for (unsigned i = 0; i < segments.size(); ++i)
        {
            const int length = static_cast<unsigned char>(segments[i]);
            const bool isComment = stream.first && stream.packet == commentPacket;
            hasComment = hasComment || isComment;
            if (!isComment)
                m_file.add(at, length);
            at += length;
            if (length == 255)
                continue;
            m_file.addNumber(++stream.packet);
        }
        const std::int64_t number = header.toUInt(18U, false);
        if (!hasComment)
            addPlace(header, serial, number - stream.page);
        stream.page = number;
        return at;
    }

    /// The time at the end of the page, whether it starts or ends its stream, and its distance from
    /// the page before. The pages of the other headers, which have no time, may be made anew.
    void addPlace(const ByteVector& header, unsigned serial, std::int64_t step)
    {
        const std::int64_t time = header.toLongLong(6U, false);
        if (time <= 0)
            return;
        m_file.addNumber(serial);
        m_file.addNumber(time);
        m_file.addNumber(header[5]);
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
