#include "Physical/QoCheckObject.h"

void CQoCheckObject::setCheckState(ECheckState state)
{
    m_checkState = state;
}
