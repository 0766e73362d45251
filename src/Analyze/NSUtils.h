#pragma once

#include "Analyze/NSAtom.h"
#include "Logical/LTObjectType.h"
#include "QoColl/Tags/Forward.h"
#include "types/String.h"

/// How a value is found inside a name. Letters and digits count, everything else is an "extra"
/// character, blanks included. Texts are zero-terminated; positions and lengths count UTF-16
/// units. A search that finds nothing leaves them as they were unless it says otherwise. Nothing
/// here allocates; all of it is safe from any thread.
class QO_API CNSUtils
{
public:
    CNSUtils() = delete;

    struct FindStringInfo
    {
        bool ignoreExtraChars = false;
        bool numberAsText = false;
        int maxExtraPercentSearch = 0; ///< with more, extra characters are not ignored
        int maxExtraPercentText = 0;
        bool isNumber = false;
    };
    static constexpr int wordSepSize = 11;
    static constexpr int ltAssocTypesCount = 4;
    /// The closing zero is a separator too.
    static const char16_t m_wordSep[wordSepSize];
    /// The logical types that names are analysed for.
    static const CLTObjectType::EType m_ltAssocsTypes[ltAssocTypesCount];

    /// False for null and "".
    static bool isNumber(const char16_t* text) noexcept;
    static int getDigitsCount(const char16_t* text) noexcept;
    static bool isWordSep(char16_t c) noexcept;
    static int getWordsCount(const char16_t* text) noexcept;
    static bool isExtraChar(char16_t c) noexcept;
    /// Rounded down. Blanks count among all characters, not among the extra ones; "" gives 100.
    static int getExtraCharsPercent(const char16_t* text) noexcept;

    /// Looks for search in text by the rules of info; false if either is empty. Where info asks for
    /// a number, the first run of digits with its value is found, so 3 finds "03" and not "13"; on
    /// failure pos then stands behind the last run.
    static bool findSubstring(const char16_t* search,
                              const char16_t* text,
                              const FindStringInfo& info,
                              int& pos,
                              int& len) noexcept;
    /// Steps over extra characters of both texts and ignores case. Takes in what both share behind
    /// the last letter or digit. A search without any of these is not found.
    static bool findSubstringNoExtraChars(const char16_t* text,
                                          const char16_t* search,
                                          int& pos,
                                          int& len) noexcept;
    /// The first run of digits at or behind pos.
    static bool findNextNumber(const char16_t* text, int& pos, int& len) noexcept;

    static int getLTAssocTypesCount() noexcept { return ltAssocTypesCount; }
    /// The index is not checked.
    static CLTObjectType::EType getLTAssocType(int index) noexcept
    {
        return m_ltAssocsTypes[index];
    }
    /// The tag's own text for the types Artist to Genre, "!" for any other.
    static CString getTagInfo(CNSAtom::EType type, CMusicTagEx& tag);
    /// Splits "track/total"; 0 for what is missing or no number.
    static void analyzeTrackNumber(const CString& text, int& track, int& total) noexcept;
    /// 0 for a text of more than four characters.
    static int getYear(const CString& text) noexcept;
};
