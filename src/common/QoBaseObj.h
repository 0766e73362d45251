#pragma once

#include "types/String.h"

/// Root of the model objects.
class QO_API CQoBaseObj
{
public:
    CQoBaseObj() = default;
    CQoBaseObj(const CQoBaseObj&) = delete;
    CQoBaseObj& operator=(const CQoBaseObj&) = delete;
    virtual ~CQoBaseObj();

    /// A text that names the object; what the flag asks for is up to the class.
    virtual CString toString(bool full) const = 0;
};
