#include "common/FilePathParts.h"

#include "common/CollPath.h"

namespace qo
{
namespace
{
constexpr std::size_t deviceLength = 2; // "C:"

/// For a path that is cut behind its last backslash.
std::u16string_view plainName(std::u16string_view folder, std::u16string_view last) noexcept
{
    // Only a drive needs no backslash before the name.
    const std::u16string_view beginning = folder.empty() ? last : folder;
    if (folder.size() + last.size() <= deviceLength || last.empty())
        return {};
    const CQoCollPath::EDeviceType type = CQoCollPath::typeOfText(beginning);
    if (type == CQoCollPath::invalid)
        return {};
    if (type == CQoCollPath::drive && folder.empty())
        return last.substr(deviceLength);
    const std::size_t start =
        type == CQoCollPath::drive ? deviceLength : folder.find(u'\\', deviceLength);
    if (start == std::u16string_view::npos)
        return {};
    // The loop runs to its end so that the compiler can compare several units at once.
    unsigned doubled = 0;
    for (std::size_t i = start; i + 1 < folder.size(); ++i)
        doubled |= static_cast<unsigned>(folder[i] == u'\\') & (folder[i + 1] == u'\\');
    if (doubled != 0)
        return {};
    const bool isEscaped = type != CQoCollPath::drive && type != CQoCollPath::network &&
                           last.find(u'%') != std::u16string_view::npos;
    return isEscaped ? std::u16string_view() : last;
}

std::u16string_view viewOf(const CString& path) noexcept
{
    return path.view();
}

const FilePath& viewOf(const FilePath& path) noexcept
{
    return path;
}

template <class Path>
CString nameOf(const Path& path)
{
    const std::u16string_view name = plainFileName(viewOf(path));
    return name.empty() ? CQoCollPath(path).getLast() : CString(name);
}

template <class Path>
CString titleOf(const Path& path)
{
    const std::u16string_view name = plainFileName(viewOf(path));
    // Without a '.' the whole name is kept.
    return name.empty() ? CQoCollPath(path).getFileTitle()
                        : CString(name.substr(0, name.rfind(u'.')));
}

template <class Path>
CString extOf(const Path& path)
{
    const std::u16string_view name = plainFileName(viewOf(path));
    if (name.empty())
        return CQoCollPath(path).getFileExt();
    const std::size_t dot = name.rfind(u'.');
    return dot == std::u16string_view::npos ? CString() : CString(name.substr(dot + 1));
}
} // namespace

std::u16string_view plainFileName(std::u16string_view path) noexcept
{
    const std::size_t cut = path.rfind(u'\\') + 1; // without a backslash npos + 1, which is 0
    return plainName(path.substr(0, cut), path.substr(cut));
}

std::u16string_view plainFileName(const FilePath& path) noexcept
{
    return plainName(path.folder().view(), path.name().view());
}

CString fileNameOf(const CString& path)
{
    return nameOf(path);
}

CString fileNameOf(const FilePath& path)
{
    return nameOf(path);
}

CString fileTitleOf(const CString& path)
{
    return titleOf(path);
}

CString fileTitleOf(const FilePath& path)
{
    return titleOf(path);
}

CString fileExtOf(const CString& path)
{
    return extOf(path);
}

CString fileExtOf(const FilePath& path)
{
    return extOf(path);
}
} // namespace qo
