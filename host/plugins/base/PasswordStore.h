#pragma once

#include "core/base/Secret.h"

namespace qo::host
{
/// The passwords of plug-ins: in the desktop's store where there is one (SecretService), else in
/// the file "passwords" of the data folder, which its owner alone may read. A password that the
/// file has counts, wherever new ones go. Nothing is kept open. From any thread.
class PasswordStore
{
public:
    /// A trial changes nothing.
    explicit PasswordStore(bool isTrial) : m_isTrial(isTrial) {}

    // These throw HostError when a store cannot be used: the desktop's is locked, or others may
    // read the file.

    Secret read(const CString& plugin) const;
    void write(const CString& plugin, const Secret& password) const;
    /// False when the password may be left in the desktop's store, which does not run.
    bool remove(const CString& plugin) const;
    /// Throws HostError when others may read the file.
    static void needPrivateFile();

private:
    bool m_isTrial;
};
} // namespace qo::host
