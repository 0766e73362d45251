#include "common/QoException.h"

#include "common/Log.h"
#include "common/MakeObject.h"
#include "types/Utf.h"

namespace
{
/// Messages of other exceptions are copied through a buffer of this size.
constexpr unsigned messageBuffer = 1024;
constexpr unsigned messageLimit = 1022; // without the closing NUL
constexpr int loggedMessageLimit = 999;
} // namespace

CQoException::CQoException(EType type, const char16_t* message) : m_type(type), m_message(message)
{
}

CQoException::~CQoException() = default;

CString CQoException::getErrorMessage() const
{
    return m_message;
}

bool CQoException::isSet() const
{
    return m_type == noError;
}

void CQoException::set(EType type, const char16_t* message)
{
    m_type = type;
    m_message = message;
}

void CQoException::reset()
{
    set(noError, nullptr);
}

void CQoException::copy(const CQoException* other)
{
    m_type = other->m_type;
    m_message = other->m_message;
}

void CQoException::copy(const CException* other)
{
    char16_t buffer[messageBuffer] = {};
    other->GetErrorMessage(buffer, messageLimit + 1);
    m_message = buffer;
}

namespace qo
{
void logException(const char16_t* text, const CQoException& exception)
{
    log(level::error, u"%s: err msg: %s", text, exception.getErrorMessage());
}

void logException(const char16_t* text, const CException& exception)
{
    log(level::error, u"%s: %s", text, textOf(exception));
}

CString textOf(const CException& exception)
{
    char16_t buffer[loggedMessageLimit + 1] = {};
    exception.GetErrorMessage(buffer, loggedMessageLimit + 1);
    return buffer;
}

void logException(const char16_t* text, const char* message)
{
    log(level::error, u"%s: %s", text, fromUtf8(message).Left(loggedMessageLimit));
}

void throwOutOfMemory(const SourcePlace& place)
{
    try
    {
        log(level::error, u"not enough memory: file: %s, line: %d ", place.file, place.line);
    }
    catch (const std::bad_alloc&)
    {
        // There is not even enough memory for the log line.
    }
    throw new CQoException(CQoException::outOfMemory, nullptr);
}
} // namespace qo
