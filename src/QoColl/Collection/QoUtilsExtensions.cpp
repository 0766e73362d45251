#include "Physical/HDFile.h"
#include "QoColl/Collection/QoUtils.h"
#include "common/FilePathParts.h"
#include "types/CharClass.h"
#include "types/StringArray.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <string>
#include <string_view>

// Which extensions are music, pictures or texts: the tables of the kernel, and what a host adds.

namespace
{
enum class MediaKind : std::uint8_t
{
    audio,
    video
};
struct MediaExt
{
    std::u16string_view ext;
    MediaKind kind;
};
constexpr MediaExt mediaExts[] = {
    {u"mp3", MediaKind::audio},  {u"mp2", MediaKind::audio},  {u"ogg", MediaKind::audio},
    {u"flac", MediaKind::audio}, {u"wma", MediaKind::audio},  {u"wav", MediaKind::audio},
    {u"m4p", MediaKind::audio},  {u"m4b", MediaKind::audio},  {u"m4a", MediaKind::audio},
    {u"aa", MediaKind::audio},   {u"aax", MediaKind::audio},  {u"amr", MediaKind::audio},
    {u"aac", MediaKind::audio},  {u"ac3", MediaKind::audio},  {u"au", MediaKind::audio},
    {u"aiff", MediaKind::audio}, {u"aif", MediaKind::audio},  {u"wmv", MediaKind::video},
    {u"m4v", MediaKind::video},  {u"mp4", MediaKind::video},  {u"MP4", MediaKind::video},
    {u"3gp", MediaKind::video},  {u"3g2", MediaKind::video},  {u"rm", MediaKind::video},
    {u"rmvb", MediaKind::video}, {u"ram", MediaKind::video},  {u"avi", MediaKind::video},
    {u"flv", MediaKind::video},  {u"f4v", MediaKind::video},  {u"mpg", MediaKind::video},
    {u"mpeg", MediaKind::video}, {u"ts", MediaKind::video},   {u"mov", MediaKind::video},
    {u"qt", MediaKind::video},   {u"divx", MediaKind::video}, {u"dv", MediaKind::video},
    {u"mkv", MediaKind::video},  {u"webm", MediaKind::video}};
constexpr std::size_t longestExt = 4;

/// An extension as a number, made of up to four folded units: equal extensions give equal numbers.
/// Every file of a scan asks, so the table is searched by halving and without comparing texts.
template <class Fold>
constexpr std::uint64_t extKey(std::u16string_view ext, Fold fold)
{
    std::uint64_t key = 0;
    for (char16_t c : ext)
        key = key << 16 | fold(c);
    return key;
}

struct MediaKey
{
    std::uint64_t key;
    MediaKind kind;
};
constexpr auto mediaKeys = []
{
    constexpr auto asciiLower = [](char16_t c) -> char16_t
    { return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c - u'A' + u'a') : c; };
    std::array<MediaKey, std::size(mediaExts)> keys{};
    for (std::size_t i = 0; i < keys.size(); ++i)
        keys[i] = {extKey(mediaExts[i].ext, asciiLower), mediaExts[i].kind};
    std::sort(keys.begin(),
              keys.end(),
              [](const MediaKey& a, const MediaKey& b) { return a.key < b.key; });
    return keys;
}();

/// Nothing for an extension that is neither audio nor video.
std::optional<MediaKind> kindInTable(std::u16string_view ext)
{
    if (ext.size() > longestExt)
        return {};
    const std::uint64_t key = extKey(ext, qo::toLower);
    const auto found = std::lower_bound(mediaKeys.begin(),
                                        mediaKeys.end(),
                                        key,
                                        [](const MediaKey& entry, std::uint64_t wanted)
                                        { return entry.key < wanted; });
    if (found == mediaKeys.end() || found->key != key)
        return {};
    return found->kind;
}

/// What the host added, by the extension in small letters.
std::map<std::u16string, CQoUtils::EExtKind>& furtherExts()
{
    static std::map<std::u16string, CQoUtils::EExtKind> kinds;
    return kinds;
}

std::u16string inSmallLetters(std::u16string_view ext)
{
    std::u16string lower(ext);
    std::ranges::transform(lower, lower.begin(), qo::toLower);
    return lower;
}

std::optional<MediaKind> kindOfExt(const CString& ext)
{
    const std::optional<MediaKind> known = kindInTable(ext.view());
    if (known)
        return known;
    switch (CQoUtils::getFurtherExtKind(ext))
    {
    case CQoUtils::EK_Audio:
        return MediaKind::audio;
    case CQoUtils::EK_Video:
        return MediaKind::video;
    default:
        return {};
    }
}
} // namespace

void CQoUtils::setFurtherExts(const CStringArray& exts, const CArray<EExtKind>& kinds)
{
    furtherExts().clear();
    for (int i = 0; i < exts.GetSize() && i < kinds.GetSize(); ++i)
        furtherExts().try_emplace(inSmallLetters(exts[i].view()), kinds[i]);
}

CQoUtils::EExtKind CQoUtils::getFurtherExtKind(const CString& ext)
{
    if (furtherExts().empty())
        return EK_Other;
    const auto found = furtherExts().find(inSmallLetters(ext.view()));
    return found == furtherExts().end() ? EK_Other : found->second;
}

bool CQoUtils::isAudioExt(const CString& ext)
{
    return kindOfExt(ext) == MediaKind::audio;
}

bool CQoUtils::isVideoExt(const CString& ext)
{
    return kindOfExt(ext) == MediaKind::video;
}

bool CQoUtils::isMusicExt(const CString& ext)
{
    return kindOfExt(ext).has_value();
}

bool CQoUtils::isMusicFilePath(const CString& path)
{
    return isMusicExt(qo::fileExtOf(path));
}

bool CQoUtils::isPictureFile(const CString& ext)
{
    return CHDFile::isPictureFile(ext);
}

bool CQoUtils::isTextFile(const CString& ext)
{
    return CHDFile::isTextFile(ext);
}
