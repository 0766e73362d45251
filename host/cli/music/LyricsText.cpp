#include "cli/music/LyricsText.h"

#include "cli/shown/Output.h"
#include "cli/shown/Text.h"
#include "core/base/HostFiles.h"

#include <cerrno>

namespace qo::cli
{
namespace
{
constexpr std::size_t largestText = std::size_t(4) << 20;

/// Decodes UTF-16 after its byte order mark of two bytes.
CString fromUtf16(const std::string& bytes, bool isBigEndian)
{
    std::u16string text;
    for (std::size_t i = 2; i + 1 < bytes.size(); i += 2)
    {
        const auto first = static_cast<unsigned char>(bytes[i]);
        const auto second = static_cast<unsigned char>(bytes[i + 1]);
        text += static_cast<char16_t>(isBigEndian ? first << 8 | second : second << 8 | first);
    }
    return CString(text.c_str());
}

CString fromLatin1(const std::string& bytes)
{
    std::u16string text;
    for (const char c : bytes)
        text += static_cast<char16_t>(static_cast<unsigned char>(c));
    return CString(text.c_str());
}
} // namespace

std::string readLyricsFile(const CString& path, CString& text)
{
    std::string bytes;
    const int error = host::readFile(path, largestText, bytes);
    if (error == EFBIG)
        return "is too large for lyrics";
    if (error != 0)
        return "cannot be read: " + host::errorWords(error);
    if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF"))
        text = fromUtf16(bytes, bytes[0] == '\xFE');
    else if (bytes.starts_with("%PDF") || bytes.find('\0') != std::string::npos)
        return "is no plain text; a viewer can show it";
    else if (bytes.starts_with("\xEF\xBB\xBF"))
        text = fromUtf8(bytes.substr(3));
    else
        text = isUtf8(bytes) ? fromUtf8(bytes) : fromLatin1(bytes);
    return {};
}

std::string shownLyrics(const CString& lyrics)
{
    const std::string text = toUtf8(lyrics);
    std::string shown;
    std::string part;
    const auto endLine = [&]
    {
        shown += harmless(part) + "\n";
        part.clear();
    };
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const bool isReturn = text[i] == '\r';
        if (isReturn && i + 1 < text.size() && text[i + 1] == '\n')
            continue;
        if (isReturn || text[i] == '\n')
            endLine();
        else
            part += text[i] == '\t' ? ' ' : text[i];
    }
    if (!part.empty())
        endLine();
    if (!shown.empty())
        shown.pop_back();
    return shown;
}
} // namespace qo::cli
