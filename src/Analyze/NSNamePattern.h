#pragma once

#include "Analyze/NSAtom.h"
#include "common/ListT.h"

/// A name pattern: a file name, or the name part of a rename rule, as a row of atoms. The pattern
/// owns its atoms; pointers to them are valid until the atom is removed or the pattern is cleared.
/// No locks.
///
///   "The Lamplighters - Low Tide" starts as one fixed atom. Split by the values of its music file:
///     [Artist]:The Lamplighters  [FixedString]: -   [Track]:Low Tide
class QO_API CNSNamePattern
{
public:
    CNSNamePattern() = default;
    CNSNamePattern(const CNSNamePattern&) = delete;
    CNSNamePattern& operator=(const CNSNamePattern&) = delete;
    virtual ~CNSNamePattern();
    /// Without detail: the texts of fixed atoms and the type names of all others ("[Artist] -
    /// [Track]"). With detail: type name, ":", value and a blank for each atom.
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
    /// Takes the atom out of the pattern without deleting it; it then belongs to the caller.
    void removeAtom(CNSAtom* atom);
    CNSAtom* removeAtomAt(int index);
    /// Put the atom beside the anchor and take ownership of it. When the anchor is not in this
    /// pattern nothing happens, and the atom remains the caller's.
    void insertAtomBefore(CNSAtom* atom, CNSAtom* anchor);
    void insertAtomAfter(CNSAtom* atom, CNSAtom* anchor);

    int getAtomCount(CNSAtom::EType type) const;
    /// The index-th atom of that type, counted from 0, or null.
    CNSAtom* getAtom(CNSAtom::EType type, int index) const;
    /// The value of the first atom of that type; "" without one.
    CString getAtomValue(CNSAtom::EType type) const;

    CListT<CNSAtom> m_atoms;
};
