#pragma once

#include "Analyze/TextSet.h"
#include "types/String.h"

#include <string>
#include <vector>

namespace qo
{
/// A name made ready for ValueIndex::findIn.
class SearchedName
{
public:
    explicit SearchedName(const CString& name);

private:
    friend class ValueIndex;

    std::u16string m_folded;
    std::u16string m_lettersAndDigits;
    bool m_ignoresExtraChars;
};

/// Tells which of many values stand in a name: exactly those that CNSUtils::findSubstring finds
/// when extra characters are ignored up to maxExtraCharsPercent on both sides.
class ValueIndex
{
public:
    explicit ValueIndex(const std::vector<CString>& values);
    /// Adds the indexes of the values that stand in the name, each maybe more than once.
    void findIn(const SearchedName& name, std::vector<int>& found) const;

private:
    /// Where both sides ignore extra characters, only their letters and digits count.
    TextSet m_lettersAndDigits;
    /// The same values for names that are mostly punctuation.
    TextSet m_literal;
    /// Values that are mostly punctuation themselves.
    TextSet m_alwaysLiteral;
};
} // namespace qo
