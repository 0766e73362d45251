#pragma once

#include "Analyze/NSAtom.h"
#include "Logical/LTObjectType.h"
#include "QoColl/Tags/Forward.h"
#include "types/String.h"

/// How a value is found inside a name, and small helpers for numbers in names. An "extra" character
/// is everything but letters and digits, blanks included. Texts are zero-terminated UTF-16;
/// positions and lengths count UTF-16 units. A search that finds nothing leaves pos and len
/// unchanged unless it says otherwise. Nothing here allocates, and everything may be called from
/// any thread.
class QO_API CNSUtils
{
public:
    CNSUtils() = delete;

    /// How findSubstring() compares. Percentages are shares of extra characters, 0 to 100.
    struct FindStringInfo
    {
        bool ignoreExtraChars = false;
        bool numberAsText = false;     ///< treat a number like any text after all
        int maxExtraPercentSearch = 0; ///< a value with more is searched literally
        int maxExtraPercentText = 0;   ///< likewise for the text that is searched
        bool isNumber = false;         ///< the value is a number: compare whole runs of digits
    };
    static constexpr int wordSepSize = 11;
    static constexpr int ltAssocTypesCount = 4;
    /// What separates words; the closing zero of the text is one of them.
    static const char16_t m_wordSep[wordSepSize];
    /// The logical types for which names are analysed.
    static const CLTObjectType::EType m_ltAssocsTypes[ltAssocTypesCount];

    /// False for null and "".
    static bool isNumber(const char16_t* text) noexcept;
    static int getDigitsCount(const char16_t* text) noexcept;
    static bool isWordSep(char16_t c) noexcept;
    static int getWordsCount(const char16_t* text) noexcept;
    static bool isExtraChar(char16_t c) noexcept;
    /// The share of extra characters, rounded down. A blank counts as a character but not as an
    /// extra one, so "a - b" has 1 of 5: 20. "" gives 100.
    static int getExtraCharsPercent(const char16_t* text) noexcept;

    /// Looks for the first occurrence of search in text by the rules of info; false if either is
    /// empty. Where info asks for a number, the first run of digits with that value is found, so 3
    /// finds "03" and not "13"; when none is found, pos is left after the last run of digits.
    static bool findSubstring(const char16_t* search,
                              const char16_t* text,
                              const FindStringInfo& info,
                              int& pos,
                              int& len) noexcept;
    /// Finds search in text while both may have extra characters anywhere, without regard to case.
    /// After the last letter or digit the match goes on as long as both texts continue with equal
    /// characters. A search without any letter or digit is not found.
    ///
    ///   Example: search "Low Tide!", text "02_low-tide!.txt": pos 3, len 9 ("low-tide!").
    static bool findSubstringNoExtraChars(const char16_t* text,
                                          const char16_t* search,
                                          int& pos,
                                          int& len) noexcept;
    /// The first run of digits that begins at pos or after it; false when there is none.
    static bool findNextNumber(const char16_t* text, int& pos, int& len) noexcept;

    static int getLTAssocTypesCount() noexcept { return ltAssocTypesCount; }
    /// The index is not checked.
    static CLTObjectType::EType getLTAssocType(int index) noexcept
    {
        return m_ltAssocsTypes[index];
    }
    /// The tag's own text for the types Artist to Genre, "!" for any other.
    static CString getTagInfo(CNSAtom::EType type, CMusicTagEx& tag);
    /// Splits "3/12" into 3 and 12; 0 for a part that is missing or no number.
    static void analyzeTrackNumber(const CString& text, int& track, int& total) noexcept;
    /// The year as a number; 0 for a text of more than four characters or without a number.
    static int getYear(const CString& text) noexcept;
};
