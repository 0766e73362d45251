#include "QoColl/Tags/TagAttrib.h"

// Values are few (mostly one or two), so they are searched one by one.

CTagAttrib::EAttribClass CTagAttrib::getAttribClass(EAttribType type) noexcept
{
    return type == AT_Picture ? AC_Picture : AC_Text;
}

bool CTagAttrib::isRealTagAttrib(EAttribType type) noexcept
{
    return type >= AT_Artist && type <= AT_Picture;
}

int CTagAttrib::getAttribValueIdx(ESrcValueType type) const noexcept
{
    for (std::size_t i = 0; i < m_values.size(); ++i)
    {
        if (m_values[i]->m_type == type)
            return static_cast<int>(i);
    }
    return -1;
}

CTagAttribValue* CTagAttrib::getAttribValue(ESrcValueType type, bool create)
{
    const int index = getAttribValueIdx(type);
    if (index != -1)
        return m_values[static_cast<std::size_t>(index)].get();
    if (!create)
        return nullptr;
    return m_values.emplace_back(std::make_unique<CTagAttribValue>(type)).get();
}

const CTagAttribValue* CTagAttrib::getAttribValue(ESrcValueType type) const noexcept
{
    const int index = getAttribValueIdx(type);
    return index == -1 ? nullptr : m_values[static_cast<std::size_t>(index)].get();
}

bool CTagAttrib::removeAttribValue(ESrcValueType type, CString& removed)
{
    const int index = getAttribValueIdx(type);
    if (index == -1)
        return false;
    removed = m_values[static_cast<std::size_t>(index)]->getValue();
    m_values.erase(m_values.begin() + index);
    return true;
}

bool CTagAttrib::getValue(ESrcValueType type, CString& value) const
{
    const bool wantsCurrent = type == CTagAttribValue::SV_Current;
    const CTagAttribValue* found = getAttribValue(wantsCurrent ? m_crtValueType : type);
    if (found)
        value = found->getValue();
    return found != nullptr;
}

void CTagAttrib::setValue(ESrcValueType type, const char16_t* value, bool makeCurrent)
{
    setValue(type, CString(value), makeCurrent);
}

void CTagAttrib::setValue(ESrcValueType type, const CString& value, bool makeCurrent)
{
    getAttribValue(type, true)->setValue(value);
    if (makeCurrent)
        m_crtValueType = type;
}

bool CTagAttrib::setCrtValueAsOriginal()
{
    CString value;
    if (m_crtValueType == CTagAttribValue::SV_Original || !getCrtValue(value))
        return false;
    setValue(CTagAttribValue::SV_Original, value, true);
    return true;
}
