#include "types/MisreadText.h"

#include "types/Charset.h"
#include "types/Utf.h"

#include <unicode/uchar.h>
#include <unicode/uscript.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

// bytesOf() takes the bytes back, lettersOf() looks at what an encoding makes of them, and
// misreadCharsetOf() asks ICU for the encodings that come into question. ICU alone is often wrong
// with as few letters as tags have; what it proposes must also give words that somebody would
// write. Cyrillic in the wrong one of its encodings, for example, has its capitals at the ends of
// words: "Кино" of KOI8-R is "лХОП" in windows-1251.

namespace qo
{
namespace
{
enum class Script
{
    oneByte, ///< Cyrillic and Greek
    kanji,   ///< Chinese and Japanese
    hangul
};

struct Candidate
{
    std::string_view charset;
    Script script;
};

constexpr Candidate candidates[] = {{"windows-1251", Script::oneByte},
                                    {"KOI8-R", Script::oneByte},
                                    {"ISO-8859-5", Script::oneByte},
                                    {"ISO-8859-7", Script::oneByte},
                                    {"windows-1253", Script::oneByte},
                                    {"GB18030", Script::kanji},
                                    {"Big5", Script::kanji},
                                    {"Shift_JIS", Script::kanji},
                                    {"EUC-JP", Script::kanji},
                                    {"EUC-KR", Script::hangul}};
constexpr std::string_view latinCharsets[] = {
    "ISO-8859-1", "ISO-8859-2", "ISO-8859-9", "windows-1252", "windows-1250", "windows-1254"};

/// ICU gives 10 to every encoding of several bytes a sign that short bytes could have.
constexpr int noEvidence = 10;
/// By how much the surest encoding must be ahead of the next one.
constexpr double lead = 1.3;
/// ICU counts; some copies of a short text do not make it better or worse, but let it count at all.
constexpr int copies = 4;
constexpr int fewestLetters = 4;
constexpr int fewestSigns = 3;

/// What bytes beyond ASCII are in windows-1252, where that is not the number itself: 80 to 9F.
char16_t upperControl(unsigned char byte)
{
    static const std::array<char16_t, 32> table = []
    {
        std::array<char16_t, 32> signs{};
        for (unsigned i = 0; i < signs.size(); ++i)
            signs[i] = fromCharset(std::string(1, static_cast<char>(0x80 + i)), "windows-1252")[0];
        return signs;
    }();
    return table[byte - 0x80];
}

std::optional<std::string> bytesOf(const CString& text)
{
    std::string bytes;
    for (const char16_t unit : text.view())
    {
        if (unit < 0x100)
        {
            bytes += static_cast<char>(unit);
            continue;
        }
        unsigned byte = 0x80;
        while (byte < 0xA0 && upperControl(static_cast<unsigned char>(byte)) != unit)
            ++byte;
        if (byte == 0xA0)
            return {};
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

bool isAsciiLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// Texts of other scripts have hardly any ASCII letters among their bytes: the second bytes of some
/// Chinese and Japanese encodings at most.
bool isMostlyBeyondAscii(const std::string& bytes)
{
    const auto high =
        std::ranges::count_if(bytes, [](char c) { return static_cast<signed char>(c) < 0; });
    return high > 0 && high >= std::ranges::count_if(bytes, isAsciiLetter);
}

/// What a text is made of.
struct Letters
{
    int latin = 0;
    int other = 0;
    int han = 0;       ///< of the others
    int halfWidth = 0; ///< kana, of the others
    int words = 0;
    int oddCase = 0;     ///< words with a small letter ahead of a capital
    int mixed = 0;       ///< words of Latin and other letters
    int longest = 0;     ///< letters of the longest word without Latin ones
    bool isSound = true; ///< nothing in it that no text has
};

bool isFrameOrControl(UChar32 c)
{
    const int type = u_charType(c);
    return c == 0xFFFD || (c >= 0x2500 && c < 0x25A0) || type == U_UNASSIGNED ||
           type == U_PRIVATE_USE_CHAR || type == U_SURROGATE ||
           (type == U_CONTROL_CHAR && c != '\n' && c != '\r' && c != '\t');
}

/// The letters of one word, added to a sum when it ends.
class Word
{
public:
    void add(UChar32 c, Letters& sum)
    {
        UErrorCode error = U_ZERO_ERROR;
        const UScriptCode script = uscript_getScript(c, &error);
        const bool isLatin = script == USCRIPT_LATIN;
        ++(isLatin ? m_latin : m_other);
        ++(isLatin ? sum.latin : sum.other);
        sum.han += script == USCRIPT_HAN ? 1 : 0;
        m_isOdd = m_isOdd || (m_wasSmall && u_isupper(c));
        m_wasSmall = u_islower(c);
    }
    void end(Letters& sum)
    {
        if (m_other > 0)
        {
            ++sum.words;
            sum.oddCase += m_isOdd ? 1 : 0;
            sum.mixed += m_latin > 0 ? 1 : 0;
            sum.longest = m_latin > 0 ? sum.longest : std::max(sum.longest, m_other);
        }
        *this = Word();
    }

private:
    int m_latin = 0;
    int m_other = 0;
    bool m_isOdd = false;
    bool m_wasSmall = false;
};

Letters lettersOf(const CString& text)
{
    Letters sum;
    Word word;
    const std::u16string_view view = text.view();
    for (std::size_t at = 0; at < view.size();)
    {
        UChar32 c = 0;
        U16_NEXT(view.data(), at, view.size(), c);
        sum.isSound = sum.isSound && !isFrameOrControl(c);
        sum.halfWidth += c > 0xFF60 && c < 0xFFA0 ? 1 : 0;
        if (u_isalpha(c))
            word.add(c, sum);
        else
            word.end(sum);
    }
    word.end(sum);
    return sum;
}

/// Whether somebody would write these texts in that script.
bool makesSense(const Letters& letters, Script script)
{
    if (!letters.isSound || letters.other <= letters.latin)
        return false;
    if (script == Script::oneByte)
        return letters.other >= fewestLetters && letters.oddCase * 5 <= letters.words &&
               letters.mixed * 5 <= letters.words;
    // Half-width kana are what Shift_JIS makes of any Latin-1 letters. Koreans hardly use Chinese
    // signs any more.
    return letters.other - letters.halfWidth >= fewestSigns &&
           (script != Script::hangul || letters.han * 4 <= letters.other);
}
} // namespace

bool mayBeMisread(const CString& text)
{
    return std::ranges::any_of(text.view(), [](char16_t c) { return c >= 0x80; }) &&
           bytesOf(text).has_value();
}

MisreadGuess misreadCharsetOf(const std::vector<CString>& texts)
{
    std::string bytes;
    for (const CString& text : texts)
    {
        const auto own = bytesOf(text);
        if (own && isMostlyBeyondAscii(*own))
            bytes += *own + "\n";
    }
    if (bytes.empty())
        return {};
    if (isUtf8(bytes))
        return {makesSense(lettersOf(fromUtf8(bytes)), Script::kanji) ? "UTF-8" : "", false};
    std::string many;
    for (int i = 0; i < copies; ++i)
        many += bytes;
    MisreadGuess guess;
    int best = 0;
    int next = 0;
    int latin = 0;
    for (const auto& [charset, confidence] : charsetsOf(many))
    {
        if (std::ranges::find(latinCharsets, charset) != std::end(latinCharsets))
            latin = std::max(latin, confidence);
        const auto* const found = std::ranges::find(candidates, charset, &Candidate::charset);
        if (found == std::end(candidates) ||
            !makesSense(lettersOf(fromCharset(bytes, charset)), found->script))
            continue;
        guess.isInDoubt = true;
        const bool isEvidence = found->script == Script::oneByte || confidence > noEvidence;
        if (best == 0 && isEvidence)
            guess.charset = charset;
        (best == 0 ? best : next) = std::max(best == 0 ? best : next, confidence);
    }
    // The list is sorted: the first that makes sense is the surest.
    if (best < lead * next || best < latin)
        guess.charset.clear();
    guess.isInDoubt = guess.isInDoubt && guess.charset.empty();
    return guess;
}

CString rereadText(const CString& text, const std::string& charset)
{
    const auto bytes = bytesOf(text);
    const CString read = bytes ? fromCharset(*bytes, charset) : CString();
    const Letters letters = lettersOf(read);
    if (!letters.isSound || read == text)
        return {};
    if (letters.other == 0)
        return read;
    const auto* const found = std::ranges::find(candidates, charset, &Candidate::charset);
    const bool isOneByte = found == std::end(candidates) || found->script == Script::oneByte;
    // A single sign may be two letters: "Øl" is one in GB18030.
    const bool isMostlyOther = letters.other > letters.latin &&
                               (letters.other > 1 || std::ranges::none_of(*bytes, isAsciiLetter));
    // A word as a whole shows that the text was misread, also among Latin words: "Кино (live)".
    const bool hasWord = letters.longest >= (isOneByte ? 3 : 2);
    const bool isMixed = letters.mixed > 0 && (isOneByte || !isMostlyOther);
    return !isMixed && (isMostlyOther || hasWord) ? read : CString();
}
} // namespace qo
