#include "KVTagLib/mp4/Mp4Room.h"

#include "KVTagLib/TagRefusal.h"
#include "KVTagLib/mp4/Mp4Atoms.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <vector>

using namespace TagLib;

namespace KVTagLib
{
namespace
{
constexpr unsigned newPadding = 1024; ///< with its header
constexpr long mostMovieBytes = 256L << 20;
constexpr std::size_t mostTopAtoms = 1'000'000;
constexpr int deepestTable = 8;
constexpr const char* pathToList[] = {"udta", "meta", "ilst"};

[[noreturn]] void refuseSizes()
{
    throw TagRefusal(withCopyAdvice(u"the sizes of its MP4 atoms are wrong"));
}

ByteVector zeros(unsigned count)
{
    return ByteVector(count, 0);
}

/// Where tags have none yet: the kind of the list comes first.
ByteVector newMeta()
{
    ByteVector handler = zeros(8);
    handler.append("mdirappl");
    handler.append(zeros(9));
    ByteVector content = zeros(4);
    content.append(Mp4Item{"hdlr", handler}.render());
    return content;
}

/// Puts padding of the room that the list leaves beside it, or new padding if it leaves none.
void pad(Mp4Row& row, unsigned oldSize)
{
    unsigned newSize = 0;
    for (const Mp4Item& item : row.items)
        newSize += item.content.size() + atomHeaderBytes;
    if (newSize == oldSize)
        return;
    const bool fits = newSize + atomHeaderBytes <= oldSize;
    const unsigned room = fits ? oldSize - newSize : newPadding;
    row.items.push_back({"free", zeros(room - atomHeaderBytes)});
}

/// The content of an atom that the path leads through, with the new list in it.
ByteVector withList(const ByteVector& content, std::size_t depth, const ItemListEdit& edit)
{
    if (depth == std::size(pathToList))
        return edit(content);
    const bool isMeta = depth > 0 && pathToList[depth - 1] == std::string_view("meta");
    // The content of "meta" starts with version and flags, which some writers leave out.
    const unsigned skip = isMeta && content.mid(4, 4) != "hdlr" ? 4 : 0;
    std::optional<Mp4Row> row = Mp4Row::of(content.mid(skip));
    if (!row)
        refuseSizes();
    const unsigned oldSize = content.size() - skip - row->rest.size();
    if (isMeta)
        std::erase_if(row->items, [](const Mp4Item& item) { return item.name == "free"; });
    const char* const name = pathToList[depth];
    if (!row->find(name))
        row->items.push_back({name, name == std::string_view("meta") ? newMeta() : ByteVector()});
    Mp4Item& item = *row->find(name);
    item.content = withList(item.content, depth + 1, edit);
    if (isMeta)
        pad(*row, oldSize);
    ByteVector changed = content.mid(0, skip);
    changed.append(row->render());
    return changed;
}

/// Adds to all positions from the given one on.
class PositionShift
{
public:
    PositionShift(std::int64_t from, std::int64_t by) : m_from(from), m_by(by) {}

    /// In these bytes, the content of an atom of that name.
    void apply(const char* name, ByteVector& bytes)
    {
        m_data = bytes.data();
        m_size = bytes.size();
        applyTo(name, 0, m_size, 0);
    }

private:
    ByteVector bytesAt(std::int64_t at, std::int64_t count) const
    {
        return {m_data + at, static_cast<unsigned>(std::min(count, m_size - at))};
    }

    void applyTo(const ByteVector& parent, std::int64_t at, std::int64_t end, int depth)
    {
        while (at < end && depth < deepestTable)
        {
            const auto atom = atomOf(bytesAt(at, longAtomHeaderBytes), at, end);
            if (!atom)
                return;
            // Positions of what a player needs to decrypt the sound.
            if (parent == "stbl" && atom->name == "saio")
                throw TagRefusal(u"its sound is encrypted");
            if (holdsPositions(atom->name))
                applyTo(atom->name, atom->start, atom->end, depth + 1);
            else
                applyToTable(*atom);
            at = atom->end;
        }
    }

    void applyToTable(const Mp4Atom& atom)
    {
        const auto positions = positionsIn(
            atom.name, bytesAt(atom.start, Mp4Positions::headBytes), atom.end - atom.start);
        for (std::int64_t i = 0; positions && i < positions->count; ++i)
        {
            const std::int64_t at = atom.start + positions->at + i * positions->step;
            const ByteVector old = bytesAt(at, positions->width);
            const bool isShort = positions->width == 4;
            const std::int64_t position =
                isShort ? std::int64_t(old.toUInt(true)) : old.toLongLong(true);
            if (position < m_from)
                continue;
            if (isShort && position + m_by > std::numeric_limits<std::uint32_t>::max())
                throw TagRefusal(withCopyAdvice(u"its sound would lie beyond 4 GiB"));
            const ByteVector changed =
                isShort ? ByteVector::fromUInt(static_cast<unsigned>(position + m_by))
                        : ByteVector::fromLongLong(position + m_by);
            std::ranges::copy(changed, m_data + at);
        }
    }

    std::int64_t m_from;
    std::int64_t m_by;
    char* m_data = nullptr;
    std::int64_t m_size = 0;
};

ByteVector contentOf(FileStream& file, const Mp4Atom& atom)
{
    file.seek(static_cast<long>(atom.start));
    return file.readBlock(static_cast<unsigned long>(atom.end - atom.start));
}

std::vector<Mp4Atom> topLevelOf(FileStream& file)
{
    std::vector<Mp4Atom> atoms;
    for (std::int64_t at = 0; at < file.length() && atoms.size() < mostTopAtoms;)
    {
        file.seek(static_cast<long>(at));
        const auto atom = atomOf(file.readBlock(longAtomHeaderBytes), at, file.length());
        if (!atom)
            refuseSizes();
        atoms.push_back(*atom);
        at = atom->end;
    }
    return atoms;
}

/// What stands outside of the movie header and has positions: fragments and their index.
void shiftFragments(FileStream& file, const std::vector<Mp4Atom>& atoms, PositionShift shift)
{
    for (const Mp4Atom& atom : atoms)
    {
        if (atom.name != "moof" && atom.name != "mfra")
            continue;
        if (!atom.isWhole || atom.end - atom.start > mostMovieBytes)
            refuseSizes();
        const ByteVector content = contentOf(file, atom);
        ByteVector changed = content;
        shift.apply("moof", changed);
        file.seek(static_cast<long>(atom.start));
        if (changed != content)
            file.writeBlock(changed);
    }
}
} // namespace

void editItemList(FileStream& file, const ItemListEdit& edit)
{
    const std::vector<Mp4Atom> atoms = topLevelOf(file);
    const auto movie = std::ranges::find(atoms, ByteVector("moov"), &Mp4Atom::name);
    if (movie == atoms.end() || !movie->isWhole || movie->end - movie->start > mostMovieBytes)
        refuseSizes();
    const std::int64_t start = movie == atoms.begin() ? 0 : std::prev(movie)->end;
    Mp4Item changed{"moov", withList(contentOf(file, *movie), 0, edit)};
    const std::int64_t grown =
        atomHeaderBytes + std::int64_t(changed.content.size()) - (movie->end - start);
    if (grown != 0)
    {
        // The index of a stream counts from itself.
        if (std::any_of(
                atoms.begin(), movie, [](const Mp4Atom& atom) { return atom.name == "sidx"; }))
            throw TagRefusal(withCopyAdvice(u"its index stands ahead of its movie header"));
        PositionShift shift(movie->end, grown);
        shift.apply("moov", changed.content);
        shiftFragments(file, atoms, shift);
    }
    file.insert(changed.render(),
                static_cast<unsigned long>(start),
                static_cast<unsigned long>(movie->end - start));
}
} // namespace KVTagLib
