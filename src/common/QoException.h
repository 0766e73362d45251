#pragma once

#include "types/Exception.h"
#include "types/String.h"

/// The kernel's exception: created on the heap, thrown and caught as a pointer, deleted by the
/// catcher.
class QO_API CQoException
{
public:
    enum EType : int
    {
        noError = 0,
        outOfMemory = 3,
        unsupportedExtract = 9,
        extractFailed = 10
    };

    /// A null message leaves the message empty.
    CQoException(EType type, const char16_t* message);
    CQoException(const CQoException&) = default;
    CQoException& operator=(const CQoException&) = default;
    virtual ~CQoException();

    EType getType() const { return m_type; }
    virtual CString getErrorMessage() const;
    /// True exactly when the type is noError: callers rely on this sense.
    virtual bool isSet() const;

    /// A null message empties the stored one.
    void set(EType type, const char16_t* message);
    void reset();
    void copy(const CQoException* other);
    /// Takes over the message, cut to 1022 units; the type stays.
    void copy(const CException* other);

private:
    EType m_type;
    CString m_message;
};

namespace qo
{
/// One line at level error for a caught exception: "%s: err msg: %s" with the text and its message.
QO_API void logException(const char16_t* text, const CQoException& exception);
/// "%s: %s", with at most 999 units of the message.
QO_API void logException(const char16_t* text, const CException& exception);
QO_API void logException(const char16_t* text, const char* message);
} // namespace qo
