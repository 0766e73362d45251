#include "KVTagLib/mp4/Mp4PlayTime.h"

#include "KVTagLib/mp4/Mp4Atoms.h"

#include <algorithm>
#include <limits>
#include <map>
#include <vector>

// A movie has a time of its own and tracks with theirs, each in units of its own:
//
//   moov { mvhd <time>, trak { tkhd <id>, mdia { mdhd <time>, hdlr <kind>, ... stsd <sound> } },
//          mvex { trex <id, time of a sample> } }
//   moof { traf { tfhd <id, time of a sample>, trun <number of samples, or the time of each> } }
//
// The first track of sound counts, else the movie. A file in fragments (moof) leaves the times of
// its movie and tracks zero; that of a track is then the sum of its samples.

using namespace TagLib;

namespace KVTagLib
{
namespace
{
constexpr int mostAtoms = 100'000;
constexpr int mostDepth = 8;
constexpr long mostBytesOfAnAtom = 16L << 20;

struct Time
{
    std::uint64_t length = 0;
    std::uint32_t unit = 0; ///< so many make a second

    int milliseconds() const
    {
        const double value = unit == 0 ? 0 : 1000.0 * static_cast<double>(length) / unit;
        return value < std::numeric_limits<int>::max() ? static_cast<int>(value) : 0;
    }
};

struct Track
{
    std::uint32_t id = 0;
    bool isSound = false;
    Time time;
    int sampleRate = 0;
    int channels = 0;
};

class Mp4Times
{
public:
    explicit Mp4Times(IOStream& file) : m_file(file) {}

    void read() { readAtoms(0, m_file.length(), 0); }

    const Track* sound() const
    {
        const auto found = std::ranges::find_if(m_tracks, &Track::isSound);
        return found == m_tracks.end() ? nullptr : &*found;
    }
    Time timeOf(const Track& track) const
    {
        const auto fragments = m_fragments.find(track.id);
        if (track.time.length > 0 || fragments == m_fragments.end())
            return track.time;
        return {fragments->second, track.time.unit};
    }
    Time timeOfMovie() const { return m_movie; }

private:
    void readAtoms(std::int64_t at, std::int64_t end, int depth)
    {
        while (at < end && depth < mostDepth && ++m_atoms < mostAtoms)
        {
            m_file.seek(static_cast<long>(at));
            const auto atom = atomOf(
                m_file.readBlock(std::min<std::int64_t>(longAtomHeaderBytes, end - at)), at, end);
            if (!atom)
                return;
            readAtom(*atom, depth);
            at = atom->end;
        }
    }

    void readAtom(const Mp4Atom& atom, int depth)
    {
        for (const char* folder : {"moov", "trak", "mdia", "minf", "stbl", "mvex", "moof", "traf"})
        {
            if (atom.name != folder)
                continue;
            if (atom.name == "trak")
                m_tracks.emplace_back();
            return readAtoms(atom.start, atom.end, depth + 1);
        }
        if (atom.name == "mvhd")
            m_movie = timeIn(contentOf(atom));
        else if (atom.name == "trex")
        {
            const ByteVector content = contentOf(atom);
            m_timeOfSample[numberAt(content, 4)] = numberAt(content, 12);
        }
        else if (atom.name == "tfhd")
            readFragment(contentOf(atom));
        else if (atom.name == "trun")
            m_fragments[m_track] += lengthOfRun(contentOf(atom));
        else if (!m_tracks.empty())
            readTrack(atom, m_tracks.back());
    }

    void readTrack(const Mp4Atom& atom, Track& track)
    {
        if (atom.name == "tkhd")
        {
            const ByteVector content = contentOf(atom);
            track.id = numberAt(content, isLong(content) ? 20 : 12);
        }
        else if (atom.name == "mdhd")
            track.time = timeIn(contentOf(atom));
        else if (atom.name == "hdlr")
            track.isSound = track.isSound || contentOf(atom).mid(8, 4) == "soun";
        else if (atom.name == "stsd")
        {
            const ByteVector content = contentOf(atom);
            track.channels = content.size() < 44 ? 0 : content.toShort(32U, true);
            track.sampleRate = static_cast<int>(numberAt(content, 40) >> 16);
        }
    }

    ByteVector contentOf(const Mp4Atom& atom)
    {
        m_file.seek(static_cast<long>(atom.start));
        return m_file.readBlock(std::min<std::int64_t>(atom.end - atom.start, mostBytesOfAnAtom));
    }

    static std::uint32_t numberAt(const ByteVector& bytes, unsigned at)
    {
        return at + 4 <= bytes.size() ? bytes.toUInt(at, true) : 0;
    }
    /// Version 1 has times of 64 bits.
    static bool isLong(const ByteVector& content) { return content.startsWith("\1"); }
    static Time timeIn(const ByteVector& content)
    {
        if (!isLong(content))
            return {numberAt(content, 16), numberAt(content, 12)};
        const std::uint64_t high = numberAt(content, 24);
        return {high << 32 | numberAt(content, 28), numberAt(content, 20)};
    }

    /// The header of a fragment's track may say how long each sample is.
    void readFragment(const ByteVector& content)
    {
        const std::uint32_t flags = numberAt(content, 0);
        m_track = numberAt(content, 4);
        m_sample = m_timeOfSample[m_track];
        const unsigned at = 8 + ((flags & 1) != 0 ? 8 : 0) + ((flags & 2) != 0 ? 4 : 0);
        if ((flags & 8) != 0)
            m_sample = numberAt(content, at);
    }

    std::uint64_t lengthOfRun(const ByteVector& content) const
    {
        const std::uint32_t flags = numberAt(content, 0);
        const std::uint64_t count = numberAt(content, 4);
        constexpr std::uint32_t hasTimes = 0x100;
        if ((flags & hasTimes) == 0)
            return count * m_sample;
        const unsigned first = 8 + ((flags & 1) != 0 ? 4 : 0) + ((flags & 4) != 0 ? 4 : 0);
        unsigned step = 4;
        for (const std::uint32_t other : {0x200U, 0x400U, 0x800U})
            step += (flags & other) != 0 ? 4 : 0;
        std::uint64_t sum = 0;
        for (std::uint64_t i = 0; i < count && first + i * step < content.size(); ++i)
            sum += numberAt(content, static_cast<unsigned>(first + i * step));
        return sum;
    }

    IOStream& m_file;
    int m_atoms = 0;
    Time m_movie;
    std::vector<Track> m_tracks;
    std::map<std::uint32_t, std::uint32_t> m_timeOfSample; ///< by track
    std::map<std::uint32_t, std::uint64_t> m_fragments;    ///< the length of each track
    std::uint32_t m_track = 0;                             ///< of the fragment that is being read
    std::uint32_t m_sample = 0;                            ///< its time of a sample
};
} // namespace

void completeMp4(IOStream& file, AudioProperties& properties)
{
    if (properties.milliseconds > 0 && properties.sampleRate > 0)
        return;
    Mp4Times times(file);
    times.read();
    const Track* const sound = times.sound();
    const Time time = sound ? times.timeOf(*sound) : times.timeOfMovie();
    if (properties.milliseconds <= 0)
        properties.milliseconds = time.milliseconds();
    if (properties.bitrate <= 0 && properties.milliseconds > 0)
        properties.bitrate = static_cast<int>(8 * file.length() / properties.milliseconds);
    if (!sound || properties.sampleRate > 0)
        return;
    properties.sampleRate = sound->sampleRate;
    properties.channels = sound->channels;
}
} // namespace KVTagLib
