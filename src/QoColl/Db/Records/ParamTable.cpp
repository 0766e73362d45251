#include "QoColl/Db/Records/ParamTable.h"

#include "common/Log.h"
#include "types/CharClass.h"

// Reading splits the text into lines and each line at its first ':'; writing is one call of the
// formatter with all values.

namespace qo
{
namespace
{
/// Limits what a damaged text can make its reader log.
constexpr std::size_t maxLoggedLength = 256;
constexpr int maxLoggedLines = 1000;

CString startOf(std::u16string_view text)
{
    return CString(text.substr(0, maxLoggedLength));
}

bool hasLineEnd(std::u16string_view text)
{
    return text.find_first_of(u"\r\n") != std::u16string_view::npos;
}

/// A line end would be the end of the parameter.
CString onOneLine(const char16_t* text)
{
    CString line(text);
    line.Replace(u'\r', u' ');
    line.Replace(u'\n', u' ');
    return line;
}
} // namespace

bool readParams(const CString& text,
                const ParamReader& reader,
                const std::function<ParamTaken(int id, std::u16string_view value)>& take)
{
    std::u16string_view rest = text.view();
    int badLines = 0;
    const auto complain = [&](const char16_t* format, std::u16string_view value, int number)
    {
        if (++badLines <= maxLoggedLines)
            log(level::error, format, startOf(value), number, startOf(text.view()));
    };
    for (int index = 0; !rest.empty(); ++index)
    {
        const std::size_t end = rest.find(u'\n');
        const std::u16string_view piece = rest.substr(0, end);
        rest = end == std::u16string_view::npos ? std::u16string_view() : rest.substr(end + 1);

        const std::size_t colon = piece.find(u':');
        if (colon == 0 || colon == std::u16string_view::npos)
        {
            complain(reader.noNumber, piece, index);
            continue;
        }
        const int id = textToInt(piece.substr(0, colon));
        const std::u16string_view value = piece.substr(colon + 1);
        const ParamTaken taken = take(id, value);
        if (taken == ParamTaken::last)
            break;
        if (taken == ParamTaken::unknown)
            complain(reader.unknownNumber, value, id);
    }
    return !text.IsEmpty();
}

CString writeParams(const CString& format, std::vector<FormatArg>& values)
{
    std::vector<CString> cleaned;
    cleaned.reserve(values.size());
    for (FormatArg& value : values)
    {
        if (value.kind() != FormatArg::Kind::text)
            continue;
        const auto* const text = static_cast<const char16_t*>(value.pointer());
        if (hasLineEnd(text))
            value = FormatArg(cleaned.emplace_back(onOneLine(text)));
    }
    CString text;
    formatTo(text, format.GetString(), values.data(), values.size());
    return text;
}
} // namespace qo
