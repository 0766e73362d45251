#pragma once

#include "Logical/Forward.h"
#include "Logical/LTObjectType.h"

#include <array>

namespace qo
{
/// The logical objects that may have become unused since the last clean-up, so that one changed
/// file does not cost a look at every object. Past a small number it only knows that there are
/// many. A noted object may have ended: it is looked for by its address and never asked.
class QO_API UnusedNotes
{
public:
    struct Note
    {
        const CLTObject* object;
        CLTObjectType::EType type;
    };

    /// Those of the process; like CLTManager not for several threads at once.
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
