#pragma once

#include "core/base/Secret.h"

#include <functional>
#include <string>
#include <utility>

namespace qo::host
{
/// Who logs in to a service. A password that is kept somewhere is fetched when it is first needed,
/// so that whoever asks the service nothing is not asked to unlock anything.
class Login
{
public:
    using IsCanceled = std::function<bool()>;
    using Source = std::function<Secret(const IsCanceled& isCanceled)>;

    Login() = default;
    /// The source may throw HostError.
    Login(const CString& user, Source source) : m_user(toUtf8(user)), m_source(std::move(source)) {}

    /// Without a password the one of this user stays.
    void change(const CString& user, const CString& password)
    {
        std::string name = toUtf8(user);
        if (password.IsEmpty() && name == m_user)
            return;
        m_user = std::move(name);
        m_password = Secret(password);
        m_source = {};
    }
    const std::string& user() const { return m_user; }
    /// Throws what the source throws, and asks it again the next time. isCanceled, which may be
    /// empty, ends its waiting.
    const Secret& password(const IsCanceled& isCanceled)
    {
        if (m_source)
            m_password = m_source(isCanceled);
        m_source = {};
        return m_password;
    }
    /// As far as it has been fetched.
    const Secret& known() const { return m_password; }

private:
    std::string m_user;
    Secret m_password;
    Source m_source;
};
} // namespace qo::host
