#pragma once

#include "bus/Bus.h"
#include "core/base/Secret.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace qo::host
{
/// The desktop's store of passwords: what stands behind "org.freedesktop.secrets" on the session
/// bus. A locked one is unlocked, for which the desktop may ask the user. For one thread.
///
/// sd-bus speaks it, which the host has for UDisks2 already, and it takes six calls. libsecret
/// would bring glib with a thread of its own, and would not say whether a password is locked or
/// missing. Passwords go over the bus as they are: it is a socket of this user's alone.
class SecretService
{
public:
    // Virtual, since whoever loads the module does not link with it.
    virtual ~SecretService();

    /// What an item is found by.
    using Attributes = std::vector<std::pair<std::string, std::string>>;

    /// Null where there is no session bus, or no such service on it.
    static std::unique_ptr<SecretService> open();

    // These throw HostError.

    /// "" when there is none.
    virtual Secret find(const Attributes& attributes);
    /// In place of the one that is there.
    virtual void
    store(const std::string& label, const Attributes& attributes, const Secret& secret);
    virtual void remove(const Attributes& attributes);

private:
    SecretService();

    /// Where the items are; the locked ones are unlocked.
    std::vector<std::string> search(const Attributes& attributes);
    void unlock(const std::string& object);
    std::string defaultCollection();
    /// Has the desktop ask what it needs to know, and waits for the user. "/" is nothing to ask.
    void settle(const std::string& prompt);

    Bus m_bus;
    std::string m_session;
};
} // namespace qo::host
