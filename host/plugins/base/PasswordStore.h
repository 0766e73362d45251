#pragma once

#include "core/base/Secret.h"

#include <functional>

namespace qo::host
{
/// Where a new password goes.
enum class PasswordPlace
{
    best,    ///< the desktop's store where there is one, else the file
    desktop, ///< nowhere else
    file
};

/// The passwords of plug-ins: in the desktop's store (SecretService), or in the file "passwords" of
/// the data folder, which its owner alone may read. A password that the file has counts, wherever
/// new ones go. The file also has an id, by which the items of the desktop's store are found, so
/// that they stay with the data folder when it is moved. Nothing is kept open. From any thread.
class PasswordStore
{
public:
    /// A trial changes nothing.
    explicit PasswordStore(bool isTrial) : m_isTrial(isTrial) {}

    /// Whether the user has interrupted the wait for the desktop; may be empty.
    using IsCanceled = std::function<bool()>;

    // These throw HostError when a store cannot be used: the desktop's is locked, or others may
    // read the file; "interrupted" after isCanceled. Nothing has changed then.

    Secret read(const CString& plugin, const IsCanceled& isCanceled) const;
    void write(const CString& plugin,
               const Secret& password,
               PasswordPlace place,
               const IsCanceled& isCanceled) const;
    /// False when the password may be left in the desktop's store, which does not run.
    bool remove(const CString& plugin, const IsCanceled& isCanceled) const;
    /// Throws HostError when others may read the file.
    static void needPrivateFile();

private:
    bool m_isTrial;
};
} // namespace qo::host
