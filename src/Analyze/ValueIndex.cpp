#include "Analyze/ValueIndex.h"

#include "Analyze/AtomTables.h"
#include "Analyze/NSUtils.h"
#include "types/CharClass.h"

namespace qo
{
namespace
{
/// Names end at the first zero, here as in the searches of CNSUtils.
std::u16string fold(const CString& name)
{
    std::u16string folded(name.GetString());
    for (char16_t& c : folded)
        c = toLower(c);
    return folded;
}

std::u16string foldLettersAndDigits(const CString& name)
{
    std::u16string folded;
    for (const char16_t* c = name.GetString(); *c; ++c)
    {
        if (!CNSUtils::isExtraChar(*c))
            folded += toLower(*c);
    }
    return folded;
}

bool ignoresExtraChars(const CString& name)
{
    return CNSUtils::getExtraCharsPercent(name) <= maxExtraCharsPercent;
}
} // namespace

SearchedName::SearchedName(const CString& name)
    : m_folded(fold(name))
    , m_lettersAndDigits(foldLettersAndDigits(name))
    , m_ignoresExtraChars(ignoresExtraChars(name))
{
}

ValueIndex::ValueIndex(const std::vector<CString>& values)
{
    int id = 0;
    for (const CString& value : values)
    {
        std::u16string folded = fold(value);
        std::u16string lettersAndDigits = foldLettersAndDigits(value);
        const bool literal = !ignoresExtraChars(value);
        if (!folded.empty())
            (literal ? m_alwaysLiteral : m_literal).add(std::move(folded), id);
        // A value of blanks alone has no letter or digit to be found by.
        if (!literal && !lettersAndDigits.empty())
            m_lettersAndDigits.add(std::move(lettersAndDigits), id);
        ++id;
    }
    m_lettersAndDigits.finish();
    m_literal.finish();
    m_alwaysLiteral.finish();
}

void ValueIndex::findIn(const SearchedName& name, std::vector<int>& found) const
{
    m_alwaysLiteral.findIn(name.m_folded, found);
    if (name.m_ignoresExtraChars)
        m_lettersAndDigits.findIn(name.m_lettersAndDigits, found);
    else
        m_literal.findIn(name.m_folded, found);
}
} // namespace qo
