#pragma once

#include "Analyze/NSNamePattern.h"
#include "Reorganize/Forward.h"

/// The folder that a rule gives to a file, below the folder in which the rule is applied.
class QO_API CSubdirRule
{
public:
    CSubdirRule() = default;
    CSubdirRule(const CSubdirRule&) = delete;
    CSubdirRule& operator=(const CSubdirRule&) = delete;
    virtual ~CSubdirRule() = default;
    virtual CString toString(bool detailed) const;

    void copyFrom(const CSubdirRule* other);
    /// A new rule that belongs to the caller.
    CSubdirRule* clone() const;
    /// Every folder is valid.
    bool isValid() const noexcept { return true; }

    bool keepOriginal = true; ///< the file keeps the folder it has
    CNSNamePattern m_pattern;
};
