#include "types/Format.h"
#include "types/String.h"
#include "types/Utf.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>

/// Any text is a harmless format, whatever arguments it meets, and a text without '%' prints
/// itself.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const CString format = qo::fromUtf8({reinterpret_cast<const char*>(data), size});
    const char16_t* const none = nullptr;
    CString text;
    text.Format(format, format, -1, 3.25e300, u'x', "narrow \xFF", none, &text, size);
    text.Format(format);
    const std::u16string_view printed = format.GetString();
    if (printed.find(u'%') == std::u16string_view::npos && text.view() != printed)
        std::abort();
    return 0;
}
