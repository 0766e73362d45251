#include "Analyze/NSNamePattern.h"

#include "Analyze/MakeOwned.h"

namespace
{
}

CNSNamePattern::~CNSNamePattern()
{
    clear();
}

CString CNSNamePattern::toString(bool detailed) const
{
    CString text;
    for (const CNSAtom* atom : m_atoms)
    {
        if (detailed)
            text += atom->toString(true) + u" ";
        else if (atom->m_type == CNSAtom::FixedString)
            text += atom->m_value;
        else
            text += CNSAtom::getAtomTypeName(atom->m_type);
    }
    return text;
}

void CNSNamePattern::clear()
{
    for (const CNSAtom* atom : m_atoms)
        delete atom;
    m_atoms.clear();
}

void CNSNamePattern::copyFrom(const CNSNamePattern& other)
{
    if (this == &other)
        return;
    clear();
    for (const CNSAtom* atom : other.m_atoms)
        addAtom(atom->clone());
}

CNSNamePattern* CNSNamePattern::clone() const
{
    auto copy = qo::makeOwned<CNSNamePattern>(QO_HERE(u".\\Analyze\\NSNamePattern"));
    copy->copyFrom(*this);
    return copy.release();
}

void CNSNamePattern::addAtom(CNSAtom* atom)
{
    if (!atom)
        qo::throwOutOfMemory(QO_HERE(u".\\Analyze\\NSNamePattern"));
    m_atoms.add(atom);
}

void CNSNamePattern::setAtom(CNSAtom::EType type, const CString& value)
{
    if (CNSAtom* atom = getAtom(type, 0))
        atom->m_value = value;
    else
        addAtom(
            qo::makeOwned<CNSAtom>(QO_HERE(u".\\Analyze\\NSNamePattern"), type, value).release());
}

void CNSNamePattern::removeAtom(CNSAtom* atom)
{
    m_atoms.remove(atom);
}

CNSAtom* CNSNamePattern::removeAtomAt(int index)
{
    CNSAtom* atom = m_atoms.GetAt(index);
    m_atoms.RemoveAt(index);
    return atom;
}

void CNSNamePattern::insertAtomBefore(CNSAtom* atom, CNSAtom* anchor)
{
    const int index = m_atoms.find(anchor);
    if (index != -1)
        m_atoms.InsertAt(index, atom);
}

void CNSNamePattern::insertAtomAfter(CNSAtom* atom, CNSAtom* anchor)
{
    const int index = m_atoms.find(anchor);
    if (index != -1)
        m_atoms.InsertAt(index + 1, atom);
}

int CNSNamePattern::getAtomCount(CNSAtom::EType type) const
{
    int count = 0;
    for (const CNSAtom* atom : m_atoms)
        count += atom->m_type == type;
    return count;
}

CNSAtom* CNSNamePattern::getAtom(CNSAtom::EType type, int index) const
{
    for (CNSAtom* atom : m_atoms)
    {
        if (atom->m_type == type && index-- == 0)
            return atom;
    }
    return nullptr;
}

CString CNSNamePattern::getAtomValue(CNSAtom::EType type) const
{
    const CNSAtom* atom = getAtom(type, 0);
    return atom ? atom->m_value : CString();
}
