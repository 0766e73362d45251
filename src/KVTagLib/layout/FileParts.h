#pragma once

#include "KVTagLib/layout/FilePart.h"

#include <taglib/tbytevector.h>
#include <taglib/tstring.h>

namespace KVTagLib
{
/// Collects the parts of a file, up to a limit.
class FileParts
{
public:
    /// The name is cut if it is long, and so is the text.
    void add(int depth,
             const TagLib::String& name,
             std::int64_t size,
             const TagLib::String& text = TagLib::String());
    /// Nothing for a size of 0.
    void addRest(int depth, const char* name, std::int64_t size);
    /// Whether nothing more is taken, so that a hostile file ends here.
    bool isFull() const { return m_parts.size() > most; }
    std::vector<FilePart> take() { return std::move(m_parts); }

private:
    static constexpr std::size_t most = 100'000;

    std::vector<FilePart> m_parts;
};

/// The name of a frame, an atom or a chunk.
inline TagLib::String nameOfBytes(const TagLib::ByteVector& bytes)
{
    return {bytes, TagLib::String::Latin1};
}
} // namespace KVTagLib
