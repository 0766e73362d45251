#pragma once

#include "types/Exception.h"
#include "types/String.h"

/// The kernel's exception. It is created on the heap and thrown and caught as a pointer; the
/// catcher deletes it, so a handler's first line takes it into a std::unique_ptr.
class QO_API CQoException
{
public:
    /// The numbers are known to hosts.
    enum EType : int
    {
        noError = 0,
        outOfMemory = 3,
        unsupportedExtract = 9,
        extractFailed = 10
    };

    /// A null message is "".
    CQoException(EType type, const char16_t* message);
    CQoException(const CQoException&) = default;
    CQoException& operator=(const CQoException&) = default;
    virtual ~CQoException();

    EType getType() const { return m_type; }
    virtual CString getErrorMessage() const;
    /// True when the type is noError, contrary to its name: callers rely on it.
    virtual bool isSet() const;

    /// A null message clears the stored one.
    void set(EType type, const char16_t* message);
    void reset();
    void copy(const CQoException* other);
    /// Copies the message, cut to 1022 units; the type stays.
    void copy(const CException* other);

private:
    EType m_type;
    CString m_message;
};

namespace qo
{
/// Logs a caught exception in one line at level error: "%s: err msg: %s" with the text and its
/// message.
QO_API void logException(const char16_t* text, const CQoException& exception);
/// "%s: %s", with at most 999 units of the message.
QO_API void logException(const char16_t* text, const CException& exception);
QO_API void logException(const char16_t* text, const char* message);
/// The words of an exception as its log line has them.
QO_API CString textOf(const CException& exception);
} // namespace qo
