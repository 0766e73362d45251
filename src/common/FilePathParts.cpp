#include "common/FilePathParts.h"

#include "common/CollPath.h"

#include <algorithm>

namespace qo
{
namespace
{
constexpr std::size_t deviceLength = 2; // "C:"
} // namespace

std::u16string_view plainFileName(std::u16string_view path) noexcept
{
    if (path.size() <= deviceLength || path.back() == u'\\')
        return {};
    const CQoCollPath::EDeviceType type = CQoCollPath::typeOfText(path);
    if (type == CQoCollPath::invalid)
        return {};
    const std::size_t start =
        type == CQoCollPath::drive ? deviceLength : path.find(u'\\', deviceLength);
    if (start == std::u16string_view::npos)
        return {};
    // The loop runs to its end so that the compiler can compare several units at once.
    unsigned doubled = 0;
    for (std::size_t i = start; i + 1 < path.size(); ++i)
        doubled |= static_cast<unsigned>(path[i] == u'\\') & (path[i + 1] == u'\\');
    if (doubled != 0)
        return {};
    const std::u16string_view name = path.substr(std::max(path.rfind(u'\\') + 1, start));
    const bool isEscaped = type != CQoCollPath::drive && type != CQoCollPath::network &&
                           name.find(u'%') != std::u16string_view::npos;
    return isEscaped ? std::u16string_view() : name;
}

CString fileNameOf(const CString& path)
{
    const std::u16string_view name = plainFileName(path.view());
    return name.empty() ? CQoCollPath(path).getLast() : CString(name);
}

CString fileTitleOf(const CString& path)
{
    const std::u16string_view name = plainFileName(path.view());
    // Without a '.' the whole name is kept.
    return name.empty() ? CQoCollPath(path).getFileTitle()
                        : CString(name.substr(0, name.rfind(u'.')));
}

CString fileExtOf(const CString& path)
{
    const std::u16string_view name = plainFileName(path.view());
    if (name.empty())
        return CQoCollPath(path).getFileExt();
    const std::size_t dot = name.rfind(u'.');
    return dot == std::u16string_view::npos ? CString() : CString(name.substr(dot + 1));
}
} // namespace qo
