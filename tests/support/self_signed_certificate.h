// A key and a certificate signed by itself, made in memory, for servers in tests.
#pragma once

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <memory>
#include <string>
#include <vector>

namespace korvex::tests {

struct OpenSslDeleter {
    void operator()(EVP_PKEY* key) const noexcept { EVP_PKEY_free(key); }
    void operator()(X509* certificate) const noexcept { X509_free(certificate); }
};

struct SelfSignedCertificate {
    /// For these host names and IPv4 addresses, valid from yesterday for a week. Raises `std::runtime_error`.
    explicit SelfSignedCertificate(const std::vector<std::string>& names);

    /// The certificate as PEM text.
    std::string pem() const;

    std::unique_ptr<EVP_PKEY, OpenSslDeleter> key;
    std::unique_ptr<X509, OpenSslDeleter> certificate;
};

}  // namespace korvex::tests
