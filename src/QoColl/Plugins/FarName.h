#pragma once

#include "common/CollPath.h"

namespace qo
{
/// The component of a collection path for a name that a plug-in or device gave. A backslash, a
/// control character and what is not text become private-use characters or U+FFFD, so that the name
/// is one component in every form of a path: "a\b" is "a\uF05Cb". At most 1,000 units are taken.
QO_API CString farComponent(const CString& name);

/// The same for what lies in a folder; "" for what is no name of an entry: "", "." and "..", and
/// more than 1,000 units.
QO_API CString farEntryName(const CString& name);

/// The name for people, with the characters that farComponent() has replaced.
QO_API CString farNameOf(const CString& component);
} // namespace qo
