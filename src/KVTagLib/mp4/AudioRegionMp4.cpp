#include "KVTagLib/mp4/Mp4Atoms.h"
#include "KVTagLib/sound/AudioRegionReader.h"

#include <algorithm>
#include <optional>
#include <vector>

// The sound of an MP4 file. A file is a row of atoms (size, name, content), some of which contain
// atoms:
//
//   ftyp
//   moov { mvhd, trak { ... stbl { stsz, stco } }, udta { meta { tags } } }
//   free
//   mdat { sound }
//
// Counted are all atoms but padding (free, skip) and the user data of the movie (udta). The tables
// stco and co64 hold positions of sound from the start of the file. A growing tag changes these, so
// they are counted as positions inside the atom that they point into. Those of fragments (moof) and
// of their index (mfra) are treated alike.

using TagLib::ByteVector;

namespace KVTagLib
{
namespace
{
constexpr std::size_t maxAtoms = 100'000;

using Atom = Mp4Atom;

/// The atom at that position within the given end; nothing if its size cannot be right.
std::optional<Atom> atomAt(AudioRegionReader& file, std::int64_t at, std::int64_t end)
{
    return atomOf(file.look(at, std::min<std::int64_t>(longAtomHeaderBytes, end - at)), at, end);
}

bool isPadding(const Atom& atom)
{
    return atom.name == "free" || atom.name == "skip";
}

class Mp4Sound
{
public:
    explicit Mp4Sound(AudioRegionReader& file) : m_file(file) {}

    bool add()
    {
        for (std::int64_t at = 0; at < m_file.size();)
        {
            const std::optional<Atom> atom = atomAt(m_file, at, m_file.size());
            if (!atom || m_atoms.size() > maxAtoms)
                return false;
            if (!isPadding(*atom))
                m_atoms.push_back(*atom);
            at = atom->end;
        }
        for (const Atom& atom : m_atoms)
        {
            addPart(atom);
        }
        return true;
    }

private:
    /// Adds the atoms inside this one; the tags, in moov/udta, are left out.
    void addParts(const Atom& whole)
    {
        for (std::int64_t at = whole.start; at < whole.end && m_file.sound();)
        {
            const std::optional<Atom> part = atomAt(m_file, at, whole.end);
            if (!part)
                return m_file.add(at, whole.end - at);
            at = part->end;
            if (!isPadding(*part) && (whole.name != "moov" || part->name != "udta"))
                addPart(*part);
        }
    }

    void addPart(const Atom& part)
    {
        m_file.add(part.name);
        if (holdsPositions(part.name))
            return addParts(part);
        const std::int64_t size = part.end - part.start;
        const ByteVector head = m_file.look(part.start, Mp4Positions::headBytes);
        const std::optional<Mp4Positions> positions = positionsIn(part.name, head, size);
        if (positions)
            addPositions(part, *positions);
        else
            m_file.add(part.start, size);
    }

    /// Positions of the sound count from the start of the file, which a growing tag changes. What
    /// must stay equal is the position inside the atom with the sound.
    void addPositions(const Atom& table, const Mp4Positions& positions)
    {
        std::int64_t done = table.start;
        for (std::int64_t i = 0; i < positions.count; ++i)
        {
            const std::int64_t at = table.start + positions.at + i * positions.step;
            const ByteVector bytes = m_file.look(at, positions.width);
            if (bytes.size() < positions.width)
                return;
            m_file.add(done, at - done);
            addPosition(positions.width == 4 ? std::int64_t(bytes.toUInt(true))
                                             : bytes.toLongLong(true));
            done = at + positions.width;
        }
        m_file.add(done, table.end - done);
    }

    void addPosition(std::int64_t position)
    {
        const auto behind = std::upper_bound(m_atoms.begin(),
                                             m_atoms.end(),
                                             position,
                                             [](std::int64_t value, const Atom& atom)
                                             { return value < atom.start; });
        const bool inside = behind != m_atoms.begin() && position < std::prev(behind)->end &&
                            std::prev(behind)->name != "moov";
        m_file.addNumber(inside ? behind - m_atoms.begin() : -1);
        m_file.addNumber(inside ? position - std::prev(behind)->start : -1);
    }

    AudioRegionReader& m_file;
    std::vector<Atom> m_atoms; ///< the top level, without padding
};
} // namespace

bool addMp4Sound(AudioRegionReader& file)
{
    return Mp4Sound(file).add();
}
} // namespace KVTagLib
