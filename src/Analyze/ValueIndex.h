#pragma once

#include "Analyze/TextSet.h"
#include "types/String.h"

#include <string>
#include <vector>

namespace qo
{
/// A name prepared for ValueIndex::findIn: folded to lower case once for all types of values.
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

/// Finds which of many values occur in a name: exactly those that CNSUtils::findSubstring finds
/// when extra characters are ignored up to maxExtraCharsPercent on both sides, but at the cost of
/// one walk over the name.
class ValueIndex
{
public:
    explicit ValueIndex(const std::vector<CString>& values);
    /// Adds the indexes of the values that occur in the name; an index may be added more than once.
    void findIn(const SearchedName& name, std::vector<int>& found) const;

private:
    /// For pairs where both sides ignore extra characters: letters and digits of the values alone.
    TextSet m_lettersAndDigits;
    /// The same values for names that are mostly punctuation.
    TextSet m_literal;
    /// Values that are mostly punctuation themselves.
    TextSet m_alwaysLiteral;
};
} // namespace qo
