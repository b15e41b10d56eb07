#pragma once

#include <memory>
#include <string>

#include <openssl/evp.h>
#include <openssl/x509.h>

namespace zellick::standin {

// A self-signed certificate for one host name (a DNS name, or an IPv4 address as written),
// valid from an hour ago for a week, with its P-256 key.
struct SelfSigned {
  std::unique_ptr<X509, decltype(&X509_free)> certificate{nullptr, X509_free};
  std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key{nullptr, EVP_PKEY_free};
  std::string pem;  // the certificate
};

// Empty pointers when OpenSSL cannot make one.
SelfSigned makeSelfSigned(const std::string& host);

}  // namespace zellick::standin
