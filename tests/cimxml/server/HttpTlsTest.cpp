// SPDX-License-Identifier: Apache-2.0
// TLS: who trusts the certificate is answered, and whatever else comes to the port is sent away.
#include "HttpFixture.h"
#include "support/Certificate.h"

#include <openssl/err.h>
#include <openssl/ssl.h>

namespace tvp::test {
namespace {

class HttpTlsTest : public HttpTest {
protected:
  void startWith(const CertificateFiles& files) {
    options.tlsCertificate = files.certificate;
    options.tlsKey = files.key;
    start();
  }

  /** What a client that trusts a certificate gets as an answer, or why it refuses the server. */
  std::string answerOverTls(const std::string& trusted, const char* address = "127.0.0.1") const {
    const RawClient connection(server->port());
    const std::unique_ptr<SSL_CTX, void (*)(SSL_CTX*)> context(
        SSL_CTX_new(TLS_client_method()), SSL_CTX_free);
    SSL_CTX_load_verify_file(context.get(), trusted.c_str());
    SSL_CTX_set_verify(context.get(), SSL_VERIFY_PEER, nullptr);
    const std::unique_ptr<SSL, void (*)(SSL*)> tls(SSL_new(context.get()), SSL_free);
    X509_VERIFY_PARAM_set1_ip_asc(SSL_get0_param(tls.get()), address);
    SSL_set_fd(tls.get(), connection.socket());
    ERR_clear_error();
    if (SSL_connect(tls.get()) != 1) {
      return X509_verify_cert_error_string(SSL_get_verify_result(tls.get()));
    }
    const std::string request = post("secret", "Connection: close\r\n");
    SSL_write(tls.get(), request.data(), static_cast<int>(request.size()));
    std::string answer;
    std::string buffer(4096, '\0');
    for (int count = 1; count > 0;) {
      count = SSL_read(tls.get(), buffer.data(), static_cast<int>(buffer.size()));
      answer.append(buffer, 0, static_cast<std::size_t>(std::max(count, 0)));
    }
    return answer;
  }

  TemporaryDirectory m_directory;
};

TEST_F(HttpTlsTest, AnswersWhoTrustsTheCertificateAndNobodyElse) {
  const CertificateFiles own = makeCertificate(m_directory, "own", -AN_HOUR, AN_HOUR);
  const CertificateFiles other = makeCertificate(m_directory, "other", -AN_HOUR, AN_HOUR);
  options.limits.request = std::chrono::seconds(1);
  startWith(own);
  EXPECT_THAT(answerOverTls(own.certificate), HasSubstr("|carol|secret"));
  EXPECT_THAT(answerOverTls(other.certificate), HasSubstr("self-signed"));
  EXPECT_THAT(answerOverTls(own.certificate, "127.0.0.2"), HasSubstr("IP address mismatch"));
  const std::string plain = answerTo(post("plain"));
  EXPECT_THAT(plain, StartsWith("HTTP/1.1 400 "));
  EXPECT_THAT(plain, HasSubstr("use https"));
  for (const char* bytes : {"", "no TLS either", "\x16\x03\x01\x02"}) {
    RawClient client(server->port());
    EXPECT_THAT(client.send(bytes).rest(), testing::Not(HasSubstr("200"))) << bytes;  // ends
  }
  EXPECT_THAT(answerOverTls(own.certificate), HasSubstr("|carol|secret"));
}

TEST_F(HttpTlsTest, AnExpiredCertificateIsReportedAndRefusedByClients) {
  const CertificateFiles expired = makeCertificate(m_directory, "expired", -2 * AN_HOUR, -AN_HOUR);
  startWith(expired);
  EXPECT_TRUE(logged("has expired"));
  EXPECT_THAT(answerOverTls(expired.certificate), HasSubstr("expired"));
}

TEST_F(HttpTlsTest, FilesThatCannotBeUsedAreNamed) {
  const CertificateFiles one = makeCertificate(m_directory, "one", -AN_HOUR, AN_HOUR);
  const CertificateFiles two = makeCertificate(m_directory, "two", -AN_HOUR, AN_HOUR);
  const CertificateFiles open = makeCertificate(m_directory, "open", -AN_HOUR, AN_HOUR);
  ::chmod(open.key.c_str(), 0644);
  const std::vector<std::pair<CertificateFiles, std::string>> cases = {
      {{"/missing", one.key}, "the certificate '/missing' cannot be used"},
      {{one.key, one.key}, "the certificate '" + one.key},
      {{one.certificate, "/missing"}, "the key '/missing'"},
      {{one.certificate, two.key}, "key values mismatch"},
      {{open.certificate, open.key}, "can be read by everybody"}};
  for (const auto& [files, text] : cases) {
    try {
      startWith(files);
      ADD_FAILURE() << text;
    } catch (const std::runtime_error& error) {
      EXPECT_THAT(error.what(), HasSubstr(text));
    }
  }
}

}  // namespace
}  // namespace tvp::test
