#pragma once

#include <cstdlib>
#include <optional>
#include <string>

/// Sets a variable of the environment while it lives.
class ScopedVariable
{
public:
    ScopedVariable(const char* name, const std::string& value) : m_name(name)
    {
        if (const char* const old = std::getenv(name))
            m_old = old;
        ::setenv(name, value.c_str(), 1);
    }
    ~ScopedVariable() { m_old ? ::setenv(m_name, m_old->c_str(), 1) : ::unsetenv(m_name); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    const char* m_name;
    std::optional<std::string> m_old;
};
