// Certificates for servers in tests: an elliptic-curve key, which is made at once, and a X.509 certificate.
#include "tests/support/self_signed_certificate.h"

#include <openssl/bio.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <algorithm>
#include <random>
#include <stdexcept>

namespace korvex::tests {

namespace {

constexpr long secondsOfADay = 24L * 60 * 60;

void require(bool succeeded, const char* step) {
    if (!succeeded) throw std::runtime_error(std::string("certificate: ") + step);
}

std::string alternativeNames(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) {
        const bool isAddress = std::all_of(
            name.begin(), name.end(), [](char unit) { return unit == '.' || (unit >= '0' && unit <= '9'); });
        text += (text.empty() ? "" : ",") + std::string(isAddress ? "IP:" : "DNS:") + name;
    }
    return text;
}

void addExtension(X509* certificate, int kind, const std::string& value) {
    X509V3_CTX context;
    X509V3_set_ctx(&context, certificate, certificate, nullptr, nullptr, 0);
    X509_EXTENSION* const extension = X509V3_EXT_conf_nid(nullptr, &context, kind, value.c_str());
    require(extension != nullptr, "extension");
    const bool added = X509_add_ext(certificate, extension, -1) == 1;
    X509_EXTENSION_free(extension);
    require(added, "adding an extension");
}

}  // namespace

SelfSignedCertificate::SelfSignedCertificate(const std::vector<std::string>& names)
    : key(EVP_EC_gen("P-256")), certificate(X509_new()) {
    require(key && certificate, "key");
    X509* const made = certificate.get();
    X509_set_version(made, X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(made), static_cast<long>(std::random_device()() >> 1));
    X509_gmtime_adj(X509_getm_notBefore(made), -secondsOfADay);
    X509_gmtime_adj(X509_getm_notAfter(made), 6 * secondsOfADay);
    X509_set_pubkey(made, key.get());

    X509_NAME* const subject = X509_get_subject_name(made);
    const auto* const commonName = reinterpret_cast<const unsigned char*>(names.front().c_str());
    require(X509_NAME_add_entry_by_txt(subject, "CN", MBSTRING_UTF8, commonName, -1, -1, 0) == 1, "subject");
    X509_set_issuer_name(made, subject);
    addExtension(made, NID_subject_alt_name, alternativeNames(names));
    addExtension(made, NID_basic_constraints, "critical,CA:TRUE");
    require(X509_sign(made, key.get(), EVP_sha256()) > 0, "signature");
}

std::string SelfSignedCertificate::pem() const {
    const std::unique_ptr<BIO, decltype(&BIO_free_all)> memory(BIO_new(BIO_s_mem()), BIO_free_all);
    require(memory && PEM_write_bio_X509(memory.get(), certificate.get()) == 1, "PEM");
    char* begin = nullptr;
    const long length = BIO_get_mem_data(memory.get(), &begin);
    return std::string(begin, static_cast<std::size_t>(length));
}

}  // namespace korvex::tests
