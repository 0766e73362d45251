#include "common/CollPath.h"
#include "common/FilePathParts.h"
#include "platform/DriveMap.h"
#include "platform/FileSystem.h"
#include "types/Utf.h"

#include <cstdint>
#include <cstdlib>
#include <string>

namespace
{
void require(bool holds)
{
    if (!holds)
        std::abort();
}

/// Doubled separators make components that have no text form of their own.
bool hasEmptyPart(const CQoCollPath& path)
{
    bool hasEmpty = path.getDevice().IsEmpty();
    for (const CString& component : path.getComponents())
        hasEmpty = hasEmpty || component.IsEmpty();
    return hasEmpty;
}
} // namespace

/// Any bytes of a name survive the way into a collection path and back; any text that maps to a
/// system path is that path's one form; a parsed path prints to a text that parses to the same; a
/// safe name is one component.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    if (bytes.find('\0') == std::string::npos)
    {
        const CString path = qo::fromSystemPath("/" + bytes);
        require(qo::fromSystemPath(qo::toSystemPath(path)) == path);
    }
    const CString text = qo::fromUtf8(bytes);
    const CString drivePath = u"C:\\" + text;
    const std::string system = qo::toSystemPath(drivePath);
    if (!system.empty() && system.find("//") == std::string::npos && system.back() != '/')
        require(qo::fromSystemPath(system) == drivePath);

    for (const CString& candidate : {text, drivePath, u"\\\\usb:" + text})
    {
        const CQoCollPath parsed(candidate);
        const CString printed = parsed.toString();
        if (parsed.isValid() && parsed.needsEscape() && !hasEmptyPart(parsed))
            require(CQoCollPath(printed) == parsed);
        require(qo::fileExtOf(candidate) == parsed.getFileExt() || !parsed.isValid());
    }
    const CString safe = qo::safeLocalName(text);
    require(!safe.IsEmpty() && safe.FindOneOf(u"/\\") < 0 && safe != u"." && safe != u"..");
    require(qo::toUtf8(safe).size() <= 255);
    return 0;
}
