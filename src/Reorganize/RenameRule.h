#pragma once

#include "Analyze/NSNamePattern.h"
#include "Reorganize/Forward.h"

/// The name that a rule gives to files of one kind.
class QO_API CRenameRule
{
public:
    /// The kinds of files, one bit each.
    enum EType : int
    {
        InvalidType = 0,
        Music = 1,
        Picture = 2,
        Lyrics = 4
    };
    struct TypeInfo
    {
        EType type;
        const char16_t* name;
    };
    static constexpr int typesCount = 3;
    static const TypeInfo m_typesInfo[typesCount];

    explicit CRenameRule(EType type) : m_type(type) {}
    CRenameRule(const CRenameRule&) = delete;
    CRenameRule& operator=(const CRenameRule&) = delete;
    virtual ~CRenameRule() = default;
    virtual CString toString(bool detailed) const;

    static int getTypesCount() noexcept { return typesCount; }
    /// The index is not checked.
    static EType getType(int index) noexcept { return m_typesInfo[index].type; }
    /// InvalidType for an unknown name; upper and lower case differ.
    static EType getType(const CString& name);
    /// "InvalidType" for a number that is no type.
    static CString getTypeName(EType type);
    /// All kinds in one mask.
    static int getAllAllowedTypes() noexcept;

    void copyFrom(const CRenameRule* other);
    /// A new rule that belongs to the caller.
    CRenameRule* clone() const;
    EType getType() const noexcept { return m_type; }
    /// Whether it gives a name: the old one, or one from a pattern.
    bool isValid() const noexcept { return keepOriginal || !m_pattern.m_atoms.IsEmpty(); }

    EType m_type;
    bool keepOriginal = true;               ///< the file keeps the name it has
    bool keepOriginalIfAttribEmpty = false; ///< the same if an attribute of the pattern is empty
    CNSNamePattern m_pattern;
};
