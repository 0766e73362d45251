#include "Logical/LTObject.h"

CString CLTObject::toString(bool /*full*/) const
{
    return getDisplayName();
}

CString CLTObject::getDisplayName() const
{
    return isUnknown() ? CString(u"[unknown]") : m_name;
}
