#pragma once

#include "core/base/Secret.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace qo::host
{
/// The desktop's store of passwords: what stands behind "org.freedesktop.secrets" on the session
/// bus. A locked one is unlocked, for which the desktop may ask the user. For one thread.
class SecretService
{
public:
    virtual ~SecretService() = default;

    /// What an item is found by.
    using Attributes = std::vector<std::pair<std::string, std::string>>;

    // These throw HostError; "interrupted" when isCanceled has ended the wait for the user.

    /// "" when there is none.
    virtual Secret find(const Attributes& attributes) = 0;
    /// In place of the one that is there.
    virtual void
    store(const std::string& label, const Attributes& attributes, const Secret& secret) = 0;
    virtual void remove(const Attributes& attributes) = 0;
};

/// Null where there is no session bus, or no such service on it. isCanceled is asked while the
/// desktop asks the user, and may be empty.
std::unique_ptr<SecretService> openSecretService(std::function<bool()> isCanceled);
} // namespace qo::host
