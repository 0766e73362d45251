#pragma once

#include "Logical/Forward.h"
#include "Logical/LTObjectType.h"

#include <array>

namespace qo
{
/// Remembers which logical objects may have become unused since the last clean-up, so that one
/// changed file does not cost a look at every object. Beyond 32 it only knows that there are too
/// many, and the clean-up looks at all. A noted object may be gone by then: its address is compared
/// and never dereferenced.
class QO_API UnusedNotes
{
public:
    struct Note
    {
        const CLTObject* object;
        CLTObjectType::EType type;
    };

    /// The only instance. Like CLTManager it must not be used by several threads at once.
    static UnusedNotes& instance() noexcept;

    void add(const CLTObject* object, CLTObjectType::EType type) noexcept
    {
        if (m_count < limit)
            m_notes[static_cast<std::size_t>(m_count)] = {object, type};
        if (m_count <= limit)
            ++m_count;
    }
    void clear() noexcept { m_count = 0; }

    bool areTooMany() const noexcept { return m_count > limit; }
    int count() const noexcept { return areTooMany() ? limit : m_count; }
    const Note& at(int index) const noexcept { return m_notes[static_cast<std::size_t>(index)]; }

private:
    static constexpr int limit = 32;

    std::array<Note, limit> m_notes{};
    int m_count = 0;
};
} // namespace qo
