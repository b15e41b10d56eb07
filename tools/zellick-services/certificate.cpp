#include "certificate.h"

#include <arpa/inet.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

namespace zellick::standin {

SelfSigned makeSelfSigned(const std::string& host) {
  SelfSigned out;
  out.key.reset(EVP_EC_gen("P-256"));
  out.certificate.reset(X509_new());
  X509* x = out.certificate.get();
  if (!out.key || !x) return {};
  unsigned char serial[8];
  RAND_bytes(serial, sizeof serial);
  serial[0] &= 0x7F;  // positive
  BIGNUM* bn = BN_bin2bn(serial, sizeof serial, nullptr);
  BN_to_ASN1_INTEGER(bn, X509_get_serialNumber(x));
  BN_free(bn);
  X509_set_version(x, 2);
  X509_gmtime_adj(X509_getm_notBefore(x), -3600);
  X509_gmtime_adj(X509_getm_notAfter(x), 7 * 24 * 3600);
  X509_set_pubkey(x, out.key.get());
  X509_NAME* name = X509_get_subject_name(x);
  X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8,
                             reinterpret_cast<const unsigned char*>(host.c_str()), -1, -1, 0);
  X509_set_issuer_name(x, name);
  in_addr address{};
  const std::string san = (inet_pton(AF_INET, host.c_str(), &address) == 1 ? "IP:" : "DNS:") + host;
  X509V3_CTX ctx;
  X509V3_set_ctx_nodb(&ctx);
  X509V3_set_ctx(&ctx, x, x, nullptr, nullptr, 0);
  X509_EXTENSION* ext = X509V3_EXT_conf_nid(nullptr, &ctx, NID_subject_alt_name, san.c_str());
  if (!ext || !X509_add_ext(x, ext, -1) || !X509_sign(x, out.key.get(), EVP_sha256())) {
    X509_EXTENSION_free(ext);
    return {};
  }
  X509_EXTENSION_free(ext);
  BIO* bio = BIO_new(BIO_s_mem());
  PEM_write_bio_X509(bio, x);
  char* data = nullptr;
  const long size = BIO_get_mem_data(bio, &data);
  out.pem.assign(data, static_cast<std::size_t>(size));
  BIO_free(bio);
  return out;
}

}  // namespace zellick::standin
