#include "KVTagLib/TagText.h"

#include "types/CharClass.h"
#include "types/Charset.h"
#include "types/Utf.h"

#include <taglib/id3v1genres.h>

#include <algorithm>

namespace KVTagLib
{
namespace
{
constexpr char16_t replacement = 0xFFFD;

bool isHighSurrogate(char16_t c)
{
    return (c & 0xFC00) == 0xD800;
}

bool isLowSurrogate(char16_t c)
{
    return (c & 0xFC00) == 0xDC00;
}

/// Replaces lone surrogates, which are not valid UTF-16 and could not be written as UTF-8.
void mendSurrogates(char16_t* text, int length)
{
    for (int i = 0; i < length; ++i)
    {
        const bool pair = isHighSurrogate(text[i]) && i + 1 < length && isLowSurrogate(text[i + 1]);
        if (pair)
            ++i;
        else if (isHighSurrogate(text[i]) || isLowSurrogate(text[i]))
            text[i] = replacement;
    }
}
} // namespace

CString textOf(const TagLib::String& text, int maxLength)
{
    const int wanted = static_cast<int>(std::min<unsigned>(text.size(), maxLength));
    if (wanted == 0)
        return {};
    CString result;
    char16_t* buffer = result.GetBuffer(wanted);
    int length = 0;
    bool surrogates = false;
    for (auto it = text.begin(); length < wanted && *it != 0; ++it)
    {
        // TagLib stores one UTF-16 unit in each of its wide characters.
        buffer[length] = static_cast<char16_t>(*it);
        surrogates = surrogates || (buffer[length] & 0xF800) == 0xD800;
        ++length;
    }
    if (surrogates)
        mendSurrogates(buffer, length);
    result.ReleaseBuffer(length);
    return result;
}

TagLib::String tagTextOf(const CString& text)
{
    return {qo::toUtf8(text), TagLib::String::UTF8};
}

TagLib::String textOfBytes(const TagLib::ByteVector& bytes)
{
    const std::string_view view(bytes.data(), bytes.size());
    return qo::isUtf8(view) ? TagLib::String(bytes, TagLib::String::UTF8)
                            : tagTextOf(qo::fromCharset(view, qo::charsetOf(view)));
}

bool isBlank(const CString& text)
{
    return std::ranges::all_of(text.view(), qo::isSpace);
}

CString genreName(const CString& text)
{
    const std::u16string_view view = text.view();
    const bool bracketed = view.starts_with(u'(');
    const std::size_t end = bracketed ? view.find(u')') : view.size();
    const std::u16string_view number =
        end == view.npos ? std::u16string_view() : view.substr(bracketed, end - bracketed);
    // Genre tables end below 1000; a longer number is a genre that somebody named so.
    const bool isNumber =
        !number.empty() && number.size() <= 3 && std::ranges::all_of(number, qo::isDigit);
    if (!isNumber)
        return text;
    // Some writers add the name: "(17)Rock".
    if (bracketed && end + 1 < view.size() && view[end + 1] != u'(')
        return CString(view.substr(end + 1));
    const TagLib::String name = TagLib::ID3v1::genre(qo::textToInt(number));
    return name.isEmpty() ? text : textOf(name);
}

CString yearPart(const CString& date)
{
    // A date that begins with a dash has no year.
    const int dash = date.Find(u'-');
    return dash > 0 ? date.Left(dash) : date;
}

CString withTotal(const CString& number, const CString& total)
{
    if (qo::textToInt(total.view()) <= 0 || number.Find(u'/') >= 0 || isBlank(number))
        return number;
    return number + u'/' + total;
}
} // namespace KVTagLib
