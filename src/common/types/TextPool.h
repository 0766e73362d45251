#pragma once

#include "common/types/String.h"

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
        const auto found = m_texts.find(std::u16string_view(text));
        return found != m_texts.end() ? *found : *m_texts.emplace(text).first;
    }

private:
    struct Hash
    {
        using is_transparent = void;
        std::size_t operator()(std::u16string_view text) const noexcept
        {
            return std::hash<std::u16string_view>()(text);
        }
        std::size_t operator()(const CString& text) const noexcept { return (*this)(text.view()); }
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
};
} // namespace qo
