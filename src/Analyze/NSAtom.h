#pragma once

#include "Analyze/Forward.h"
#include "types/String.h"

/// One typed piece of a file name or of a rename rule. "01 Morning.mp3" may become the atoms
/// FixedString "01 " and Track "Morning"; the rename rule "[Artist] - [Track]" is Artist,
/// FixedString " - ", Track. `Track` is the title, `TrackNumber` the number. The types from Source
/// on occur in rules for recordings only: start and end with hours and minutes (HM) or seconds too
/// (HMS), in European (EU), American (US) or international (INT) order.
class QO_API CNSAtom
{
public:
    enum EType : int
    {
        FixedString = 1,
        Artist = 2,
        Album = 3,
        Track = 4,
        TrackNumber = 5,
        Year = 6,
        Genre = 7,
        Source = 8,
        TimeStartHMEU = 9,
        TimeStartHMSEU = 10,
        TimeStartHMUS = 11,
        TimeStartHMSUS = 12,
        TimeEndHMEU = 13,
        TimeEndHMSEU = 14,
        TimeEndHMUS = 15,
        TimeEndHMSUS = 16,
        DateStartEU = 17,
        DateStartUS = 18,
        DateStartINT = 19,
        DateEndEU = 20,
        DateEndUS = 21,
        DateEndINT = 22
    };
    struct AtomTypeName
    {
        EType type;
        const char16_t* name;
    };
    static constexpr int atomTypesCount = 22;
    /// The names by which rule files and messages know the types, ordered by type. Those without
    /// brackets are fixed by existing rule files.
    static const AtomTypeName m_atomTypeNames[atomTypesCount];

    CNSAtom(EType type, const char16_t* value) : m_type(type), m_value(value) {}
    CNSAtom(const CNSAtom&) = delete;
    CNSAtom& operator=(const CNSAtom&) = delete;
    virtual ~CNSAtom() = default;
    /// Type name, ":" and value, such as "[Artist]:Ann". The argument has no effect here.
    virtual CString toString(bool detailed) const;

    static int getAtomTypesCount() noexcept { return atomTypesCount; }
    /// The index is not checked.
    static EType getAtomType(int index) noexcept { return m_atomTypeNames[index].type; }
    /// "" for a number that is no type.
    static CString getAtomTypeName(EType type);
    /// True for track number and year: these are compared by value, so that 3 matches "03".
    static bool atomTypeIsNumber(EType type) noexcept;

    void copyfrom(const CNSAtom* other);
    /// A new atom that belongs to the caller.
    CNSAtom* clone() const;
    void setAtom(EType type, const char16_t* value);
    bool isNumber() const noexcept { return atomTypeIsNumber(m_type); }

    /// Whether both are the same slot of a pattern: equal types and, for fixed texts alone, equal
    /// values without regard to case.
    bool isEqualTo(const CNSAtom* other) const noexcept { return compare(this, other) == 0; }
    /// Negative, 0 or positive, by the same properties as isEqualTo().
    static int compare(const CNSAtom* a, const CNSAtom* b) noexcept;

    EType m_type;
    /// The text of a FixedString; of any other type the text that was found in the name, or "" for
    /// a slot that is still to be filled.
    CString m_value;
};
