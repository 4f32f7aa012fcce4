// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_SERVER_TLS_H
#define HOST_CIMXML_SERVER_TLS_H

#include <openssl/ssl.h>

#include <functional>
#include <memory>
#include <string>

namespace tvp::host::cimxml {

struct TlsRelease {
  void operator()(SSL_CTX* context) const { SSL_CTX_free(context); }
  void operator()(SSL* session) const { SSL_free(session); }
};
using TlsContext = std::unique_ptr<SSL_CTX, TlsRelease>;
using TlsSession = std::unique_ptr<SSL, TlsRelease>;

/**
 * What a server needs for TLS 1.2 and later.
 * @param certificate file with the certificate and those that lead to a root, in PEM
 * @param key file with the private key, in PEM and without a password
 * @param warn receives a sentence when clients will refuse the certificate, since its time is over or yet to
 * come
 * @throws std::runtime_error when a file cannot be used, the key is not that of the certificate, or everybody
 * may read the key
 */
TlsContext serverTls(
    const std::string& certificate, const std::string& key,
    const std::function<void(const std::string&)>& warn);

}  // namespace tvp::host::cimxml

#endif
