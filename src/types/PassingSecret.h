#pragma once

#include "types/String.h"

namespace qo
{
/// A password for the length of a call: what no other text shares is overwritten at the end.
class PassingSecret
{
public:
    explicit PassingSecret(CString& text) : m_text(text) {}
    ~PassingSecret()
    {
        for (int i = 0; i < m_text.GetLength(); ++i)
            m_text.SetAt(i, u' ');
    }
    PassingSecret(const PassingSecret&) = delete;
    PassingSecret& operator=(const PassingSecret&) = delete;

private:
    CString& m_text;
};
} // namespace qo
