#include "Physical/SourceObject.h"

CSourceObject::CSourceObject(const CString& name, IPostProcessingQueue::eItemSource source)
    : CQoCheckObject(OT_Source), m_source(source), m_name(name)
{
}

CString CSourceObject::toString(bool /*full*/) const
{
    return m_name;
}
