#pragma once

#include "Analyze/NSAtom.h"
#include "common/ListT.h"

/// A file name or rename rule as a row of atoms, which belong to the pattern. No locks.
class QO_API CNSNamePattern
{
public:
    CNSNamePattern() = default;
    CNSNamePattern(const CNSNamePattern&) = delete;
    CNSNamePattern& operator=(const CNSNamePattern&) = delete;
    virtual ~CNSNamePattern();
    /// Without detail the texts of fixed atoms and the type names of all others; with it type name,
    /// ":", value and a blank for each atom.
    virtual CString toString(bool detailed) const;

    /// Deletes the atoms.
    void clear();
    void copyFrom(const CNSNamePattern& other);
    /// A new pattern that belongs to the caller.
    CNSNamePattern* clone() const;

    /// Takes ownership. Null counts as a failed allocation and ends in qo::throwOutOfMemory().
    void addAtom(CNSAtom* atom);
    /// Sets the value of the first atom of that type, or appends one.
    void setAtom(CNSAtom::EType type, const CString& value);
    /// The atom then belongs to the caller.
    void removeAtom(CNSAtom* atom);
    CNSAtom* removeAtomAt(int index);
    /// Take ownership, unless the anchor is not here: then nothing happens.
    void insertAtomBefore(CNSAtom* atom, CNSAtom* anchor);
    void insertAtomAfter(CNSAtom* atom, CNSAtom* anchor);

    int getAtomCount(CNSAtom::EType type) const;
    /// The atom with that index among those of the type, or null.
    CNSAtom* getAtom(CNSAtom::EType type, int index) const;
    /// Of the first atom of the type; "" without one.
    CString getAtomValue(CNSAtom::EType type) const;

    CListT<CNSAtom> m_atoms;
};
