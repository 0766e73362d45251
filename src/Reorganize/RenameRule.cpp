#include "Reorganize/RenameRule.h"

#include "Analyze/MakeOwned.h"

const CRenameRule::TypeInfo CRenameRule::m_typesInfo[typesCount] = {
    {Music, u"Music"}, {Picture, u"Picture"}, {Lyrics, u"Lyrics"}};

CString CRenameRule::toString(bool detailed) const
{
    CString text;
    text.Format(u"type = %s, keepOriginal=%d, keepOriginalIfAttribEmpty=%d, pattern=%s",
                getTypeName(m_type),
                keepOriginal,
                keepOriginalIfAttribEmpty,
                m_pattern.toString(detailed));
    return text;
}

CRenameRule::EType CRenameRule::getType(const CString& name)
{
    for (const TypeInfo& info : m_typesInfo)
    {
        if (name == info.name)
            return info.type;
    }
    return InvalidType;
}

CString CRenameRule::getTypeName(EType type)
{
    for (const TypeInfo& info : m_typesInfo)
    {
        if (info.type == type)
            return info.name;
    }
    return u"InvalidType";
}

int CRenameRule::getAllAllowedTypes() noexcept
{
    int all = 0;
    for (const TypeInfo& info : m_typesInfo)
        all |= info.type;
    return all;
}

void CRenameRule::copyFrom(const CRenameRule* other)
{
    m_type = other->m_type;
    keepOriginal = other->keepOriginal;
    keepOriginalIfAttribEmpty = other->keepOriginalIfAttribEmpty;
    m_pattern.copyFrom(other->m_pattern);
}

CRenameRule* CRenameRule::clone() const
{
    auto copy = qo::makeOwned<CRenameRule>(QO_HERE(u".\\Reorganize\\RenameRule"), m_type);
    copy->copyFrom(this);
    return copy.release();
}
