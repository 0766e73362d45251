#pragma once

#include "types/String.h"

/// The value that one source gives for an attribute of a tag.
class QO_API CTagAttribValue
{
public:
    /// Further sources are the host's affair; the kernel gives them no meaning.
    enum ESrcValueType : int
    {
        SV_Original = 0, ///< as it stands in the file, or in the record that mirrors it
        SV_Edited = 1,
        SV_Current = 4 ///< never stored: stands for the source that the attribute has selected
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
