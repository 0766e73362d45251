#include "core/query/FoldedText.h"

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/uscript.h>

#include <algorithm>
#include <iterator>
#include <unordered_map>
#include <vector>

// ICU folds a text in some microseconds, which is too long for each name of a large collection. So
// each character is folded once, when it first appears, and texts are put together from a table.

namespace qo::host
{
namespace
{
constexpr char16_t notKnownYet = 0;
constexpr char16_t notOneUnit = 0xFFFF;

/// Combining marks of voiced Japanese sounds, which are letters of their own.
bool isVoiceMark(UChar32 c)
{
    return c == 0x3099 || c == 0x309A;
}

bool isAccent(UChar32 c)
{
    UErrorCode error = U_ZERO_ERROR;
    return u_charType(c) == U_NON_SPACING_MARK &&
           uscript_getScript(c, &error) == USCRIPT_INHERITED && !isVoiceMark(c);
}

/// Letters with a stroke, ligatures and typographic signs have no parts. ICU has rules for them,
/// which take longer to load than a search does. Null for all others.
const char16_t* plainForm(UChar32 c)
{
    struct Form
    {
        UChar32 letter; ///< small
        const char16_t* plain;
    };
    static constexpr Form forms[] = {
        {U'ß', u"ss"},      {U'æ', u"ae"},      {U'ð', u"d"},       {U'ø', u"o"},
        {U'þ', u"th"},      {U'đ', u"d"},       {U'ħ', u"h"},       {U'ı', u"i"},
        {U'ĸ', u"k"},       {U'ł', u"l"},       {U'ŋ', u"n"},       {U'œ', u"oe"},
        {U'ŧ', u"t"},       {U'ƀ', u"b"},       {U'«', u"\""},      {U'»', u"\""},
        {U'\u2018', u"'"},  {U'\u2019', u"'"},  {U'\u201A', u"'"},  {U'\u201B', u"'"},
        {U'\u201C', u"\""}, {U'\u201D', u"\""}, {U'\u201E', u"\""}, {U'\u201F', u"\""}};
    const auto found = std::ranges::find(forms, c, &Form::letter);
    if (found != std::end(forms))
        return found->plain;
    return c >= 0x80 && u_hasBinaryProperty(c, UCHAR_DASH) ? u"-" : nullptr;
}

class Folding
{
public:
    Folding() : m_units(0x10000, notKnownYet)
    {
        for (char16_t c = 1; c < 0x80; ++c)
            m_units[c] = c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c | 0x20) : c;
    }

    void append(std::u16string_view text, std::u16string& result)
    {
        for (const char16_t c : text)
        {
            const char16_t unit = m_units[c] == notKnownYet ? learn(c) : m_units[c];
            if (unit != notOneUnit)
                result += unit;
            else
                result += m_others[c];
        }
    }

private:
    char16_t learn(char16_t c)
    {
        const icu::UnicodeString whole = U16_IS_SURROGATE(c) || c == 0 ? c : foldedForm(c);
        const bool isOne = whole.length() == 1 && whole[0] != notOneUnit && whole[0] != notKnownYet;
        m_units[c] = isOne ? whole[0] : notOneUnit;
        if (!isOne)
            m_others[c] = std::u16string(whole.getBuffer(), std::size_t(whole.length()));
        return m_units[c];
    }

    icu::UnicodeString foldedForm(char16_t c)
    {
        UErrorCode error = U_ZERO_ERROR;
        const icu::Normalizer2* const parts = icu::Normalizer2::getNFKDInstance(error);
        icu::UnicodeString text(c);
        if (U_SUCCESS(error))
            text = parts->normalize(text, error);
        text.foldCase();
        icu::UnicodeString result;
        for (int i = 0; i < text.length(); i = text.moveIndex32(i, 1))
        {
            if (const char16_t* const plain = plainForm(text.char32At(i)))
                result.append(plain, -1);
            else if (!isAccent(text.char32At(i)))
                result.append(text.char32At(i));
        }
        return result;
    }

    std::vector<char16_t> m_units;
    std::unordered_map<char16_t, std::u16string> m_others;
};
} // namespace

void appendFolded(std::u16string_view text, std::u16string& result)
{
    static Folding folding;
    folding.append(text, result);
}

std::u16string folded(std::u16string_view text)
{
    std::u16string result;
    appendFolded(text, result);
    return result;
}
} // namespace qo::host
