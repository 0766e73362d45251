#include "QoColl/Plugins/FarName.h"

#include "platform/Clock.h"
#include "platform/Platform.h"
#include "types/Guid.h"
#include "types/Utf.h"

namespace qo
{
namespace
{
constexpr int longestFarName = 1000;
constexpr char16_t privateUse = 0xF000; // and the character, as in the paths of files
constexpr std::u16string_view partStart = u".qo-part-";
} // namespace

CString farComponent(const CString& name)
{
    CString component = fromUtf8(toUtf8(name.Left(longestFarName))); // without lone surrogates
    for (int i = 0; i < component.GetLength(); ++i)
    {
        const char16_t c = component[i];
        if (c < u' ' || c == 0x7F || c == u'\\')
            component.SetAt(i, static_cast<char16_t>(privateUse + c));
    }
    return component;
}

CString partName()
{
    return CString(partStart) + guidToText(systemClock().newGuid());
}

bool isPartName(std::u16string_view name)
{
    return name.starts_with(partStart);
}

CString farNameOf(const CString& component)
{
    CString name = component;
    for (int i = 0; i < name.GetLength(); ++i)
    {
        const auto c = static_cast<char16_t>(name[i] - privateUse);
        if (c < u' ' || c == 0x7F || c == u'\\')
            name.SetAt(i, c);
    }
    return name;
}

CString farEntryName(const CString& name)
{
    if (name.GetLength() > longestFarName || name == u"." || name == u"..")
        return {};
    return farComponent(name);
}
} // namespace qo
