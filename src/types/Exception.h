#pragma once

#include "types/Export.h"

/// Base of exceptions that are created on the heap, thrown and caught as pointers and deleted by
/// the catcher. A handler takes the pointer into a std::unique_ptr in its first line.
class QO_API CException
{
public:
    CException() = default;
    CException(const CException&) = default;
    CException& operator=(const CException&) = default;
    virtual ~CException();

    /// Copies the message with its closing zero into a buffer of maxError units, cut if longer;
    /// false when there is no message. helpContext is set to 0.
    virtual bool
    GetErrorMessage(char16_t* error, unsigned maxError, unsigned* helpContext = nullptr) const;

    /// Destroys the object; the pointer is invalid afterwards.
    void Delete() { delete this; }
};
