#include "QoColl/Collection/QoUtils.h"

#include "Physical/HDDirectory.h"
#include "Physical/HDFile.h"
#include "common/CollPath.h"
#include "common/FilePathParts.h"
#include "common/ListT.h"
#include "types/CharClass.h"
#include "types/StringArray.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

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
std::optional<MediaKind> kindOfExt(std::u16string_view ext)
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

int comparePathTexts(const CString* a, const CString* b)
{
    return CQoUtils::comparePaths(*a, *b);
}

CListT<const CString> sortedPaths(const CStringArray& dirs)
{
    CListT<const CString> sorted;
    for (const CString& dir : dirs)
        sorted.addSorted(&dir, comparePathTexts, false);
    return sorted;
}
} // namespace

bool CQoUtils::isAudioExt(const CString& ext)
{
    return kindOfExt(ext.view()) == MediaKind::audio;
}

bool CQoUtils::isVideoExt(const CString& ext)
{
    return kindOfExt(ext.view()) == MediaKind::video;
}

bool CQoUtils::isMusicExt(const CString& ext)
{
    return kindOfExt(ext.view()).has_value();
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

bool CQoUtils::getRealPath(const CQoCollPath& path, CString& real)
{
    if (path.getType() != CQoCollPath::drive && path.getType() != CQoCollPath::network)
        return false;
    real = path.toString();
    return true;
}

CString CQoUtils::getRealPath(const CQoCollPath& path)
{
    CString real;
    getRealPath(path, real);
    return real;
}

CString CQoUtils::getRealPath(const CString& path)
{
    const CQoCollPath::EDeviceType type = CQoCollPath::typeOf(path);
    return type == CQoCollPath::drive || type == CQoCollPath::network ? path : CString();
}

int CQoUtils::comparePaths(const CString& a, const CString& b)
{
    return a.CompareNoCase(b);
}

void CQoUtils::diffPaths(const CStringArray& oldDirs,
                         const CStringArray& newDirs,
                         CStringArray& added,
                         CStringArray& removed)
{
    CListT<const CString> unmatched = sortedPaths(newDirs);
    for (const CString* dir : sortedPaths(oldDirs))
    {
        if (!unmatched.removeBinary(dir, comparePathTexts))
            added.Add(*dir);
    }
    for (const CString* dir : unmatched)
        removed.Add(*dir);
}

CQoUtils::Dir CQoUtils::getDir(const boost::shared_ptr<CHDObject>& object)
{
    if (auto dir = boost::dynamic_pointer_cast<CHDDirectory>(object))
        return dir;
    const auto* file = dynamic_cast<const CHDFile*>(object.get());
    return file ? file->getParentDir() : CHDDirectory::NullDir;
}

CQoUtils::Dir CQoUtils::getRootDir(const boost::shared_ptr<CHDObject>& object)
{
    return getRootDir(getDir(object));
}

CQoUtils::Dir CQoUtils::getRootDir(const Dir& dir)
{
    const Dir* root = &dir;
    while (*root && !(*root)->isRootDir())
        root = &(*root)->getParentDir();
    return *root;
}
