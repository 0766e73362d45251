#pragma once

#include "common/CollPath.h"

#include <string_view>

namespace qo
{
/// The component of a collection path for a name that a plug-in or device gave. A backslash, a
/// control character and what is not text become private-use characters or U+FFFD, so that the name
/// is one component in every form of a path: "a\b" is "a\uF05Cb". At most 1,000 units are taken.
QO_API CString farComponent(const CString& name);

/// The same for what lies in a folder; "" for what is no name of an entry: "", "." and "..", and
/// more than 1,000 units.
QO_API CString farEntryName(const CString& name);

/// A name that nothing else has, for a file while it is being sent to a server or a device:
/// ".qo-part-" and an id. What is copied within file systems of this machine has one of
/// temporaryPathBeside().
QO_API CString partName();
/// Whether it is one: of a copy that is under way, or that was never finished. Lists leave it out.
QO_API bool isPartName(std::u16string_view name);

/// The name for people, with the characters that farComponent() has replaced.
QO_API CString farNameOf(const CString& component);
} // namespace qo
