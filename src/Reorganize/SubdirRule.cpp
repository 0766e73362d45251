#include "Reorganize/SubdirRule.h"

#include "Analyze/MakeOwned.h"

CString CSubdirRule::toString(bool detailed) const
{
    CString text;
    text.Format(u"keepOriginal=%d, ", keepOriginal);
    return text + u"pattern=" + m_pattern.toString(detailed);
}

void CSubdirRule::copyFrom(const CSubdirRule* other)
{
    keepOriginal = other->keepOriginal;
    m_pattern.copyFrom(other->m_pattern);
}

CSubdirRule* CSubdirRule::clone() const
{
    auto copy = qo::makeOwned<CSubdirRule>(QO_HERE(u".\\Reorganize\\SubdirRule"));
    copy->copyFrom(this);
    return copy.release();
}
