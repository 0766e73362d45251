#include "Physical/QoCheckObject.h"

bool CQoCheckObject::s_wasAnyChecked = false;

void CQoCheckObject::setCheckState(ECheckState state)
{
    m_checkState = state;
    if (isCheckedOrMixed())
        s_wasAnyChecked = true;
}
