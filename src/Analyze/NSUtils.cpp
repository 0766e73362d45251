#include "Analyze/NSUtils.h"

#include "QoColl/Tags/MusicTagEx.h"
#include "types/CharClass.h"

#include <string_view>

// The searches behind name patterns. findSubstring() decides between three of them: whole numbers,
// letters and digits only (matchEnd), or plain text without case.

const char16_t CNSUtils::m_wordSep[wordSepSize] = u" .[](){}<>";

const CLTObjectType::EType CNSUtils::m_ltAssocsTypes[ltAssocTypesCount] = {
    CLTObjectType::Track, CLTObjectType::Album, CLTObjectType::Artist, CLTObjectType::Genre};

namespace
{
std::u16string_view viewOf(const char16_t* text) noexcept
{
    return text ? std::u16string_view(text) : std::u16string_view();
}

int extraCharsPercent(std::u16string_view text) noexcept
{
    if (text.empty())
        return 100;
    std::size_t extra = 0;
    for (const char16_t c : text)
        extra += c != u' ' && CNSUtils::isExtraChar(c);
    return static_cast<int>(extra * 100 / text.size());
}

bool findIgnoringCase(std::u16string_view text, std::u16string_view search, int& pos) noexcept
{
    for (std::size_t i = 0; i + search.size() <= text.size(); ++i)
    {
        if (qo::compareNoCase(text.substr(i, search.size()), search) == 0)
        {
            pos = static_cast<int>(i);
            return true;
        }
    }
    return false;
}

bool findNumber(int number, const char16_t* text, int& pos, int& len) noexcept
{
    pos = 0;
    int runLength = 0;
    while (CNSUtils::findNextNumber(text, pos, runLength))
    {
        const auto length = static_cast<std::size_t>(runLength);
        if (qo::textToInt({text + pos, length}) == number)
        {
            len = runLength;
            return true;
        }
        pos += runLength;
    }
    return false;
}

const char16_t* skipExtraChars(const char16_t* text) noexcept
{
    while (*text && CNSUtils::isExtraChar(*text))
        ++text;
    return text;
}

/// Matches all of search at the start of text, passing over extra characters of both. Returns the
/// end of the match in text, or null.
const char16_t* matchEnd(const char16_t* text, const char16_t* search) noexcept
{
    // Both ends stand after the last letter or digit that matched; the closing loop extends them.
    const char16_t* textEnd = nullptr;
    const char16_t* searchEnd = nullptr;
    for (;;)
    {
        search = skipExtraChars(search);
        if (!*search)
            break;
        text = skipExtraChars(text);
        if (!*text || qo::toLower(*text) != qo::toLower(*search))
            return nullptr;
        textEnd = ++text;
        searchEnd = ++search;
    }
    while (textEnd && *textEnd && *textEnd == *searchEnd)
    {
        ++textEnd;
        ++searchEnd;
    }
    return textEnd;
}
} // namespace

bool CNSUtils::isNumber(const char16_t* text) noexcept
{
    const std::u16string_view all = viewOf(text);
    return !all.empty() && static_cast<std::size_t>(getDigitsCount(text)) == all.size();
}

int CNSUtils::getDigitsCount(const char16_t* text) noexcept
{
    int count = 0;
    for (const char16_t c : viewOf(text))
        count += qo::isDigit(c);
    return count;
}

bool CNSUtils::isWordSep(char16_t c) noexcept
{
    return std::u16string_view(m_wordSep, wordSepSize).find(c) != std::u16string_view::npos;
}

int CNSUtils::getWordsCount(const char16_t* text) noexcept
{
    int count = 0;
    bool inWord = false;
    for (const char16_t c : viewOf(text))
    {
        const bool wasInWord = inWord;
        inWord = !isWordSep(c);
        count += inWord && !wasInWord;
    }
    return count;
}

bool CNSUtils::isExtraChar(char16_t c) noexcept
{
    return !qo::isLetter(c) && !qo::isDigit(c);
}

int CNSUtils::getExtraCharsPercent(const char16_t* text) noexcept
{
    return extraCharsPercent(viewOf(text));
}

bool CNSUtils::findSubstring(const char16_t* search,
                             const char16_t* text,
                             const FindStringInfo& info,
                             int& pos,
                             int& len) noexcept
{
    const std::u16string_view searched = viewOf(search);
    const std::u16string_view all = viewOf(text);
    if (searched.empty() || all.empty())
        return false;
    if (info.isNumber && !info.numberAsText)
        return findNumber(qo::textToInt(searched), text, pos, len);
    if (info.ignoreExtraChars && extraCharsPercent(all) <= info.maxExtraPercentText &&
        extraCharsPercent(searched) <= info.maxExtraPercentSearch)
        return findSubstringNoExtraChars(text, search, pos, len);
    if (!findIgnoringCase(all, searched, pos))
        return false;
    len = static_cast<int>(searched.size());
    return true;
}

bool CNSUtils::findSubstringNoExtraChars(const char16_t* text,
                                         const char16_t* search,
                                         int& pos,
                                         int& len) noexcept
{
    if (!text || !search)
        return false;
    for (const char16_t* start = text; *start; ++start)
    {
        const char16_t* end = isExtraChar(*start) ? nullptr : matchEnd(start, search);
        if (end)
        {
            pos = static_cast<int>(start - text);
            len = static_cast<int>(end - start);
            return true;
        }
    }
    return false;
}

bool CNSUtils::findNextNumber(const char16_t* text, int& pos, int& len) noexcept
{
    const std::u16string_view all = viewOf(text);
    std::size_t first = pos < 0 ? 0 : static_cast<std::size_t>(pos);
    while (first < all.size() && !qo::isDigit(all[first]))
        ++first;
    if (first >= all.size())
        return false;
    std::size_t end = first;
    while (end < all.size() && qo::isDigit(all[end]))
        ++end;
    pos = static_cast<int>(first);
    len = static_cast<int>(end - first);
    return true;
}

CString CNSUtils::getTagInfo(CNSAtom::EType type, CMusicTagEx& tag)
{
    switch (type)
    {
    case CNSAtom::Artist:
        return tag.getArtist();
    case CNSAtom::Album:
        return tag.getAlbum();
    case CNSAtom::Track:
        return tag.getTitle();
    case CNSAtom::TrackNumber:
        return tag.getTrackNumber();
    case CNSAtom::Year:
        return tag.getYear();
    case CNSAtom::Genre:
        return tag.getGenre();
    default:
        return u"!";
    }
}

void CNSUtils::analyzeTrackNumber(const CString& text, int& track, int& total) noexcept
{
    const std::u16string_view all = text.view();
    const std::size_t slash = all.find(u'/');
    track = qo::textToInt(all.substr(0, slash));
    total = slash == std::u16string_view::npos ? 0 : qo::textToInt(all.substr(slash + 1));
}

int CNSUtils::getYear(const CString& text) noexcept
{
    constexpr int maxYearLength = 4;
    return text.GetLength() <= maxYearLength ? qo::textToInt(text.view()) : 0;
}
