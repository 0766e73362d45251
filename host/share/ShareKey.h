#pragma once

#include <QoKernel/Kernel.h>

#include <string>

namespace qo::host
{
/// The key by which friends know this user's share server again, with the certificate that carries
/// it: the file "share-key.pem" in the data folder, which its owner alone may read. It is made once
/// and never again, since invitations name its digest.
class ShareKey
{
public:
    /// Reads it. An absent one is made, and stored unless this is a trial. Throws HostError, also
    /// for a file that is damaged or that others may read.
    ShareKey(const CString& folder, bool isTrial);

    /// The private key and the certificate, one after the other.
    const std::string& pem() const { return m_pem; }
    /// The SHA-256 of the public key (SubjectPublicKeyInfo), in lower-case digits.
    const std::string& digest() const { return m_digest; }

private:
    std::string m_pem;
    std::string m_digest;
};
} // namespace qo::host
