#pragma once

#include "types/String.h"

/// The value of an attribute from one source.
class QO_API CTagAttribValue
{
public:
    /// Other numbers are sources of the host, to which the kernel gives no meaning.
    enum ESrcValueType : int
    {
        SV_Original = 0, ///< the value in the file, or in its record
        SV_Edited = 1,
        SV_Current = 4 ///< never stored: means the source that the attribute has chosen
    };

    explicit CTagAttribValue(ESrcValueType type) noexcept : m_type(type) {}
    CTagAttribValue(const CTagAttribValue&) = default;
    CTagAttribValue& operator=(const CTagAttribValue&) = default;
    virtual ~CTagAttribValue() = default;

    CString getValue() const { return m_value; }
    void setValue(const char16_t* value) { m_value = value; }
    void setValue(const CString& value) { m_value = value; }

private:
    friend class CTagAttrib;

    ESrcValueType m_type;
    CString m_value;
};
