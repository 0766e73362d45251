#include "Analyze/NSAtom.h"

#include "Analyze/MakeOwned.h"

const CNSAtom::AtomTypeName CNSAtom::m_atomTypeNames[atomTypesCount] = {
    {FixedString, u"[FixedString]"},
    {Artist, u"[Artist]"},
    {Album, u"[Album]"},
    {Track, u"[Track]"},
    {TrackNumber, u"[TrackNumber]"},
    {Year, u"[Year]"},
    {Genre, u"[Genre]"},
    {Source, u"[Source]"},
    {TimeStartHMEU, u"TimeStartHMEU"},
    {TimeStartHMSEU, u"TimeStartHMSEU"},
    {TimeStartHMUS, u"TimeStartHMUS"},
    {TimeStartHMSUS, u"TimeStartHMSUS"},
    {TimeEndHMEU, u"TimeEndHMEU"},
    {TimeEndHMSEU, u"TimeEndHMSEU"},
    {TimeEndHMUS, u"TimeEndHMUS"},
    {TimeEndHMSUS, u"TimeEndHMSUS"},
    {DateStartEU, u"DateStartEU"},
    {DateStartUS, u"DateStartUS"},
    {DateStartINT, u"DateStartINT"},
    {DateEndEU, u"DateEndEU"},
    {DateEndUS, u"DateEndUS"},
    {DateEndINT, u"DateEndINT"},
};

CString CNSAtom::toString(bool /*detailed*/) const
{
    return getAtomTypeName(m_type) + u":" + m_value;
}

CString CNSAtom::getAtomTypeName(EType type)
{
    for (const AtomTypeName& row : m_atomTypeNames)
    {
        if (row.type == type)
            return row.name;
    }
    return {};
}

bool CNSAtom::atomTypeIsNumber(EType type) noexcept
{
    return type == TrackNumber || type == Year;
}

void CNSAtom::copyfrom(const CNSAtom* other)
{
    m_type = other->m_type;
    m_value = other->m_value;
}

CNSAtom* CNSAtom::clone() const
{
    return qo::makeOwned<CNSAtom>(QO_HERE(u".\\Analyze\\NSAtom"), m_type, m_value).release();
}

void CNSAtom::setAtom(EType type, const char16_t* value)
{
    m_type = type;
    m_value = value;
}

int CNSAtom::compare(const CNSAtom* a, const CNSAtom* b) noexcept
{
    if (a->m_type != b->m_type)
        return a->m_type < b->m_type ? -1 : 1;
    return a->m_type == FixedString ? a->m_value.CompareNoCase(b->m_value) : 0;
}
