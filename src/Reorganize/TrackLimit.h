#pragma once

#include "Logical/LTObject.h"
#include "Physical/HDFile.h"

namespace qo
{
/// What a rule with a limit of tracks shows of itself.
inline CString trackLimitText(int trackLimit)
{
    CString text;
    text.Format(u"m_trackLimit=%d, ", trackLimit);
    return text;
}

/// The number of tracks of the object of that type, whose class is LT, on the file; -1 without one,
/// and for one without a name.
template <class LT>
int trackCountOf(const CHDFile& file, CLTObjectType::EType type)
{
    const boost::shared_ptr<CLTObject> object = file.getLTAssoc(type);
    if (!object || object->isUnknown())
        return -1;
    return static_cast<const LT&>(*object).getTracks().GetSize();
}
} // namespace qo
