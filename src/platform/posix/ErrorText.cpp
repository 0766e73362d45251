#include "platform/FileSystem.h"

#include <cstring>

namespace qo
{
CString errorText(int error)
{
    CString text;
    text.Format(u"%u: ", static_cast<unsigned>(error));
    // The description is not translated, so logs are the same in every locale.
    if (const char* description = ::strerrordesc_np(error))
        text.AppendFormat(u"%s", description);
    else
        text.AppendFormat(u" (%d)", error);
    return text;
}
} // namespace qo
