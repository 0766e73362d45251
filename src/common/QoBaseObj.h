#pragma once

#include "types/String.h"

/// The base of all model objects.
class QO_API CQoBaseObj
{
public:
    CQoBaseObj() = default;
    CQoBaseObj(const CQoBaseObj&) = delete;
    CQoBaseObj& operator=(const CQoBaseObj&) = delete;
    virtual ~CQoBaseObj();

    /// A text that describes the object; the class decides what full means.
    virtual CString toString(bool full) const = 0;
};
