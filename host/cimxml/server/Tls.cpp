// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/server/Tls.h"

#include "text/Quote.h"

#include <openssl/err.h>
#include <openssl/x509.h>

#include <stdexcept>

#include <sys/stat.h>

namespace tvp::host::cimxml {
namespace {

[[noreturn]] void refuse(const std::string& what, const std::string& file, const std::string& advice) {
  const unsigned long code = ERR_get_error();
  const char* reason = code == 0 ? nullptr : ERR_reason_error_string(code);
  ERR_clear_error();
  throw std::runtime_error(
      what + " " + text::quoted(file) + " cannot be used" +
      (reason == nullptr ? "" : std::string(": ") + reason) + "; " + advice);
}

/** A key with a password cannot be used: nobody is there to type it. */
int noPassword(char* /*buffer*/, int /*size*/, int /*writing*/, void* /*data*/) {
  return -1;
}

void checkTime(
    SSL_CTX* context, const std::string& file, const std::function<void(const std::string&)>& warn) {
  const X509* certificate = SSL_CTX_get0_certificate(context);
  const bool over = X509_cmp_current_time(X509_get0_notAfter(certificate)) < 0;
  const bool toCome = X509_cmp_current_time(X509_get0_notBefore(certificate)) > 0;
  if (warn && (over || toCome)) {
    warn(
        "the certificate " + text::quoted(file) + (over ? " has expired" : " is not valid yet") +
        "; clients will refuse it");
  }
}

}  // namespace

TlsContext serverTls(
    const std::string& certificate, const std::string& key,
    const std::function<void(const std::string&)>& warn) {
  TlsContext context(SSL_CTX_new(TLS_server_method()));
  if (context == nullptr) {
    throw std::bad_alloc();
  }
  SSL_CTX_set_min_proto_version(context.get(), TLS1_2_VERSION);
  SSL_CTX_set_options(context.get(), SSL_OP_NO_RENEGOTIATION | SSL_OP_IGNORE_UNEXPECTED_EOF);
  SSL_CTX_set_mode(context.get(), SSL_MODE_ENABLE_PARTIAL_WRITE | SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER);
  SSL_CTX_set_default_passwd_cb(context.get(), noPassword);
  ERR_clear_error();
  if (SSL_CTX_use_certificate_chain_file(context.get(), certificate.c_str()) != 1) {
    refuse("the certificate", certificate, "it has to be a readable file in PEM");
  }
  struct stat status {};
  if (::stat(key.c_str(), &status) == 0 && S_ISREG(status.st_mode) && (status.st_mode & S_IROTH) != 0) {
    throw std::runtime_error(
        "the key " + text::quoted(key) +
        " can be read by everybody; take that right away with 'chmod o=' and, "
        "where others may have read it, make a new one");
  }
  if (SSL_CTX_use_PrivateKey_file(context.get(), key.c_str(), SSL_FILETYPE_PEM) != 1) {
    refuse(
        "the key", key,
        "it has to be the readable private key of the certificate in PEM, without a password");
  }
  checkTime(context.get(), certificate, warn);
  return context;
}

}  // namespace tvp::host::cimxml
