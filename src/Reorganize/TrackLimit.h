#pragma once

#include "Logical/LTObject.h"
#include "Physical/HDFile.h"

namespace qo
{
/// The text by which a rule with a limit of tracks describes itself.
inline CString trackLimitText(int trackLimit)
{
    CString text;
    text.Format(u"m_trackLimit=%d, ", trackLimit);
    return text;
}

/// The number of tracks of the artist or album of the file (LT is the class for the type); -1 if
/// the file has none, or one without a name.
template <class LT>
int trackCountOf(const CHDFile& file, CLTObjectType::EType type)
{
    const boost::shared_ptr<CLTObject> object = file.getLTAssoc(type);
    if (!object || object->isUnknown())
        return -1;
    return static_cast<const LT&>(*object).getTracks().GetSize();
}
} // namespace qo
