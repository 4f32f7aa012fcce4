// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SUPPORT_CERTIFICATE_H
#define TESTS_SUPPORT_CERTIFICATE_H

#include "support/TemporaryDirectory.h"

#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <memory>
#include <stdexcept>
#include <string>

#include <sys/stat.h>

namespace tvp::test {

/** The files of a certificate that signs itself, and of its key; needs OpenSSL. */
struct CertificateFiles {
  std::string certificate;
  std::string key;
};

/**
 * Makes a certificate for 127.0.0.1 and localhost.
 * @param name of the files @param from, until in seconds from now
 */
inline CertificateFiles
makeCertificate(const TemporaryDirectory& directory, const std::string& name, long from, long until) {
  const std::unique_ptr<EVP_PKEY, void (*)(EVP_PKEY*)> key(EVP_EC_gen("P-256"), EVP_PKEY_free);
  const std::unique_ptr<X509, void (*)(X509*)> certificate(X509_new(), X509_free);
  X509_set_version(certificate.get(), 2);
  ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), 1);
  X509_gmtime_adj(X509_getm_notBefore(certificate.get()), from);
  X509_gmtime_adj(X509_getm_notAfter(certificate.get()), until);
  X509_NAME* subject = X509_get_subject_name(certificate.get());
  X509_NAME_add_entry_by_txt(
      subject, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>("localhost"), -1, -1, 0);
  X509_set_issuer_name(certificate.get(), subject);
  X509_EXTENSION* names =
      X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, "IP:127.0.0.1,DNS:localhost");
  X509_add_ext(certificate.get(), names, -1);
  X509_EXTENSION_free(names);
  X509_set_pubkey(certificate.get(), key.get());
  X509_sign(certificate.get(), key.get(), EVP_sha256());

  CertificateFiles files{directory.write(name + ".pem", ""), directory.write(name + ".key", "")};
  ::chmod(files.key.c_str(), S_IRUSR | S_IWUSR);
  const std::unique_ptr<BIO, int (*)(BIO*)> certificateFile(
      BIO_new_file(files.certificate.c_str(), "w"), BIO_free);
  const std::unique_ptr<BIO, int (*)(BIO*)> keyFile(BIO_new_file(files.key.c_str(), "w"), BIO_free);
  if (PEM_write_bio_X509(certificateFile.get(), certificate.get()) != 1 ||
      PEM_write_bio_PrivateKey(keyFile.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr) != 1) {
    throw std::runtime_error("cannot write " + files.certificate);
  }
  return files;
}

constexpr long AN_HOUR = 3600;  ///< in seconds

}  // namespace tvp::test

#endif
