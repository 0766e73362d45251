#pragma once

#include "types/String.h"

#include <array>
#include <string_view>
#include <unordered_set>

namespace qo
{
/// Gives equal texts one common buffer, so that an artist who is in a thousand rows is stored once.
/// Made for reading a series of rows; the texts outlive it. Must not be used by several threads at
/// once.
class TextPool
{
public:
    /// The text with a shared buffer; "" for null.
    CString intern(const char16_t* text)
    {
        return text ? intern(std::u16string_view(text)) : CString();
    }
    CString intern(std::u16string_view text)
    {
        if (text.empty())
            return {};
        CString& recent = m_recent[slotOf(text)];
        if (recent.view() != text)
        {
            const auto found = m_texts.find(text);
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

    /// Not noexcept on purpose: the set then stores the hash of each text, and a look-up skips the
    /// other texts of a bucket without reading them.
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
    std::array<CString, slots> m_recent; ///< the last text of each slot: the same few return often
};
} // namespace qo
