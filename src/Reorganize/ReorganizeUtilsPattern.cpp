#include "Analyze/MakeOwned.h"
#include "Reorganize/ReorganizeUtils.h"
#include "types/CharClass.h"

#include <algorithm>
#include <vector>

// Parsing of definitions.
//
//   "{artist.name} - {track.name}" becomes [Artist] " - " [Track].
//   "{x}" stays the fixed text "{x}".

namespace
{
/// The occurrence of an attribute's name in the text.
struct Hit
{
    std::size_t start;
    std::size_t length;
    CNSAtom::EType type;
};

/// Where the name of an attribute is searched next; there is none before that position.
struct Search
{
    CNSAtom::EType type;
    CString name;
    std::size_t from = 0;
};

/// Splits a text into the same pieces as if each name in turn split the first piece that contains
/// it, again and again, but passes over the text only once for each name.
class Splitter
{
public:
    explicit Splitter(std::u16string_view text) : m_text(text), m_taken(text.size()) {}

    /// Takes the next occurrence of the name that does not overlap one taken before; false if there
    /// is none.
    bool takeNext(Search& search)
    {
        const std::u16string_view name = search.name.view();
        if (name.empty())
            return false;
        for (; search.from + name.size() <= m_text.size(); ++search.from)
        {
            if (qo::compareNoCase(m_text.substr(search.from, name.size()), name) != 0 ||
                !isFree(search.from, name.size()))
                continue;
            std::fill_n(m_taken.begin() + offset(search.from), name.size(), true);
            m_hits.push_back({search.from, name.size(), search.type});
            return true;
        }
        return false;
    }

    /// Appends the pieces in the order of the text.
    void addTo(CNSNamePattern& pattern)
    {
        std::sort(m_hits.begin(),
                  m_hits.end(),
                  [](const Hit& a, const Hit& b) { return a.start < b.start; });
        std::size_t at = 0;
        for (const Hit& hit : m_hits)
        {
            addAtom(pattern, CNSAtom::FixedString, at, hit.start);
            at = hit.start + hit.length;
            addAtom(pattern, hit.type, hit.start, at);
        }
        addAtom(pattern, CNSAtom::FixedString, at, m_text.size());
    }

private:
    // Whether no part of that range was taken by another name.
    static std::ptrdiff_t offset(std::size_t index) { return static_cast<std::ptrdiff_t>(index); }

    bool isFree(std::size_t start, std::size_t length) const
    {
        const auto first = m_taken.begin() + offset(start);
        return std::find(first, first + offset(length), true) == first + offset(length);
    }
    void
    addAtom(CNSNamePattern& pattern, CNSAtom::EType type, std::size_t start, std::size_t end) const
    {
        if (start == end)
            return;
        const CString value(m_text.substr(start, end - start));
        const auto here = QO_HERE(u".\\Reorganize\\ReorganizeUtils");
        pattern.addAtom(qo::makeOwned<CNSAtom>(here, type, value).release());
    }

    std::u16string_view m_text;
    std::vector<bool> m_taken;
    std::vector<Hit> m_hits;
};
} // namespace

bool CReorganizeUtils::parseAttributesString(const CString& text, CNSNamePattern* pattern)
{
    return parseAttributesString(text, pattern, &CReorganizeUtils::getAttributeName);
}

bool CReorganizeUtils::parseAttributesString(const CString& text,
                                             CNSNamePattern* pattern,
                                             AtomNameFunc nameOf)
{
    std::vector<Search> searches;
    for (int i = 0; i < CNSAtom::getAtomTypesCount(); ++i)
    {
        const CNSAtom atom(CNSAtom::getAtomType(i), u"");
        if (atom.m_type != CNSAtom::FixedString)
            searches.push_back({atom.m_type, nameOf(&atom)});
    }
    Splitter splitter(text.view());
    // One occurrence of each name in turn: the order decides where names overlap.
    for (bool hasChanged = true; hasChanged;)
    {
        hasChanged = false;
        for (Search& search : searches)
            hasChanged |= splitter.takeNext(search);
    }
    pattern->clear();
    splitter.addTo(*pattern);
    return true;
}
