#include "share/ShareKey.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/share/DigestText.h"

#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <cerrno>
#include <cstdint>
#include <memory>

namespace qo::host
{
namespace
{
template <auto function>
struct Freed
{
    template <class T>
    void operator()(T* object) const
    {
        function(object);
    }
};
using Bio = std::unique_ptr<BIO, Freed<BIO_free_all>>;
using Key = std::unique_ptr<EVP_PKEY, Freed<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Freed<X509_free>>;

constexpr std::size_t largestFile = std::size_t{64} * 1024;
constexpr std::uint32_t rightsOfOthers = 077;
constexpr long thirtyYears = 30L * 365 * 24 * 3600; // nobody renews it, and its date proves nothing

/// Names the key, and whoever holds the key itself.
Certificate certificateOf(EVP_PKEY* key)
{
    Certificate made(X509_new());
    if (!made)
        return nullptr;
    X509_NAME* const name = X509_get_subject_name(made.get());
    const auto* const text = reinterpret_cast<const unsigned char*>("qo share");
    constexpr long version3 = 2;
    const bool isMade =
        X509_set_version(made.get(), version3) == 1 &&
        ASN1_INTEGER_set(X509_get_serialNumber(made.get()), 1) == 1 &&
        X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, text, -1, -1, 0) == 1 &&
        X509_set_issuer_name(made.get(), name) == 1 &&
        X509_gmtime_adj(X509_getm_notBefore(made.get()), -24L * 3600) != nullptr &&
        X509_gmtime_adj(X509_getm_notAfter(made.get()), thirtyYears) != nullptr &&
        X509_set_pubkey(made.get(), key) == 1 && X509_sign(made.get(), key, EVP_sha256()) > 0;
    return isMade ? std::move(made) : nullptr;
}

std::string newPem()
{
    const Key key(EVP_EC_gen("P-256"));
    const Certificate certificate = key ? certificateOf(key.get()) : nullptr;
    const Bio out(BIO_new(BIO_s_mem()));
    const bool isWritten = certificate && out &&
                           PEM_write_bio_PrivateKey(
                               out.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr) == 1 &&
                           PEM_write_bio_X509(out.get(), certificate.get()) == 1;
    if (!isWritten)
        throw HostError(ExitCode::failed, "no key for the share server could be made");
    char* text = nullptr;
    const long size = BIO_get_mem_data(out.get(), &text);
    return {text, static_cast<std::size_t>(size)};
}

/// "" unless the text has a key and the certificate of that key.
std::string digestOf(const std::string& pem)
{
    const Bio in(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
    const Key key(PEM_read_bio_PrivateKey(in.get(), nullptr, nullptr, nullptr));
    const Certificate certificate(PEM_read_bio_X509(in.get(), nullptr, nullptr, nullptr));
    if (!key || !certificate || X509_check_private_key(certificate.get(), key.get()) != 1)
        return {};
    unsigned char* bytes = nullptr;
    const int size = i2d_PUBKEY(key.get(), &bytes);
    if (size <= 0)
        return {};
    std::string digest =
        digestText({reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size)});
    OPENSSL_free(bytes);
    return digest;
}
} // namespace

ShareKey::ShareKey(const CString& folder, bool isTrial)
{
    const CString path = combinePath(folder, u"share-key.pem");
    const std::string shown = shownPath(path);
    NameInfo info;
    int error = fileSystem().look(path, info);
    if (error == ENOENT)
    {
        m_pem = newPem();
        m_digest = digestOf(m_pem);
        if (!isTrial)
            error = fileSystem().replaceFile(path, m_pem.data(), m_pem.size());
        else
            error = 0;
    }
    else if (error == 0)
    {
        if ((info.mode & rightsOfOthers) != 0)
            throw HostError(ExitCode::failed,
                            "others may read the key " + shown +
                                ": take that right away with \"chmod 600\"");
        error = readFile(path, largestFile, m_pem);
        m_digest = error == 0 ? digestOf(m_pem) : std::string();
    }
    if (error != 0)
        throw HostError(ExitCode::failed, "the key " + shown + ": " + errorWords(error));
    if (m_digest.empty())
        throw HostError(ExitCode::failed,
                        shown +
                            " is damaged: bring it back from a backup, or remove it, which makes "
                            "all invitations worthless");
}
} // namespace qo::host
