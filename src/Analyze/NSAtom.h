#pragma once

#include "Analyze/Forward.h"
#include "types/String.h"

/// One typed piece of a file name or of a rename rule. `Track` is the title of the track.
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
    /// Ordered by type. Some names bear brackets and some do not.
    static const AtomTypeName m_atomTypeNames[atomTypesCount];

    CNSAtom(EType type, const char16_t* value) : m_type(type), m_value(value) {}
    CNSAtom(const CNSAtom&) = delete;
    CNSAtom& operator=(const CNSAtom&) = delete;
    virtual ~CNSAtom() = default;
    /// Type name, ":" and value; the argument changes nothing.
    virtual CString toString(bool detailed) const;

    static int getAtomTypesCount() noexcept { return atomTypesCount; }
    /// The index is not checked.
    static EType getAtomType(int index) noexcept { return m_atomTypeNames[index].type; }
    /// "" for a value that is no type.
    static CString getAtomTypeName(EType type);
    static bool atomTypeIsNumber(EType type) noexcept;

    void copyfrom(const CNSAtom* other);
    /// A new atom that belongs to the caller.
    CNSAtom* clone() const;
    void setAtom(EType type, const char16_t* value);
    bool isNumber() const noexcept { return atomTypeIsNumber(m_type); }

    /// Of fixed texts the values count too, without regard to case; of all others the type alone.
    bool isEqualTo(const CNSAtom* other) const noexcept { return compare(this, other) == 0; }
    /// Negative, 0 or positive, by what isEqualTo() looks at.
    static int compare(const CNSAtom* a, const CNSAtom* b) noexcept;

    EType m_type;
    /// The text of a FixedString; of another type what was found in the name, empty for a slot.
    CString m_value;
};
