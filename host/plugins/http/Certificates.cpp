#include "plugins/http/Certificates.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"

#include <openssl/bio.h>
#include <openssl/pem.h>

#include <cerrno>
#include <memory>

namespace qo::host
{
void needCertificates(const CString& file)
{
    const std::unique_ptr<BIO, decltype(&::BIO_free)> opened(
        ::BIO_new_file(toSystemPath(file).c_str(), "r"), &::BIO_free);
    if (!opened)
        throw HostError(ExitCode::notFound, shownPath(file) + ": " + errorWords(errno));
    const std::unique_ptr<X509, decltype(&::X509_free)> first(
        ::PEM_read_bio_X509(opened.get(), nullptr, nullptr, nullptr), &::X509_free);
    if (!first)
        throw HostError(ExitCode::usage,
                        shownPath(file) + " has no certificate (a PEM file begins one with "
                                          "\"-----BEGIN CERTIFICATE-----\")");
}
} // namespace qo::host
