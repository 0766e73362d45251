#pragma once

#include "types/String.h"

#include <array>
#include <string_view>
#include <unordered_set>

namespace qo
{
/// Gives equal texts one buffer: the artist that stands in a thousand rows is kept once. Owned by
/// whoever reads a run of rows; the texts outlive it. Not for several threads at once.
class TextPool
{
public:
    /// A null or empty text gives the empty text.
    CString intern(const char16_t* text)
    {
        if (!text || !*text)
            return {};
        const std::u16string_view view(text);
        CString& recent = m_recent[slotOf(view)];
        if (recent.view() != view)
        {
            const auto found = m_texts.find(view);
            recent = found != m_texts.end() ? *found : *m_texts.emplace(text).first;
        }
        return recent;
    }

private:
    static constexpr std::size_t slots = 256;

    static std::size_t slotOf(std::u16string_view text) noexcept
    {
        const std::size_t middle = text[text.size() / 2];
        return ((text.front() * std::size_t(7) + middle) * 13 + text.back() + text.size()) % slots;
    }

    /// Not noexcept, which makes the set keep each text's hash: a look-up passes over the others in
    /// a bucket without reading them.
    struct Hash
    {
        using is_transparent = void;
        std::size_t operator()(std::u16string_view text) const
        {
            return std::hash<std::u16string_view>()(text);
        }
        std::size_t operator()(const CString& text) const { return (*this)(text.view()); }
    };
    struct Equal
    {
        using is_transparent = void;
        bool operator()(std::u16string_view a, const CString& b) const noexcept
        {
            return a == b.view();
        }
        bool operator()(const CString& a, std::u16string_view b) const noexcept
        {
            return a.view() == b;
        }
        bool operator()(const CString& a, const CString& b) const noexcept { return a == b; }
    };
    std::unordered_set<CString, Hash, Equal> m_texts;
    std::array<CString, slots> m_recent; ///< track numbers and years come again and again
};
} // namespace qo
