// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/indications/Destination.h"

#include "host/cimxml/message/Failure.h"
#include "host/schema/Names.h"
#include "text/Quote.h"

#include <httplib.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace tvp::host::cimxml {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds LONGEST_CONNECTING(5000);
/** How often an attempt is looked at. */
constexpr std::chrono::milliseconds GLANCE(50);
/** An answer to an export is short; more is not read. */
constexpr std::size_t LONGEST_ANSWER = 65536;

[[noreturn]] void refuse(const std::string& url, const std::string& problem) {
  throw CimFailure(
      CMPI_RC_ERR_INVALID_PARAMETER, text::quoted(url) + " is not a valid destination: " + problem +
                                         "; expected http://HOST:PORT/PATH or https://HOST:PORT/PATH");
}

std::uint16_t portOf(const std::string& url, const std::string& digits) {
  if (digits.empty() || digits.size() > 5 || digits.find_first_not_of("0123456789") != std::string::npos) {
    refuse(url, "the port is not a number");
  }
  const unsigned long port = std::stoul(digits);
  if (port == 0 || port > 65535) {
    refuse(url, "a port is a number from 1 to 65535");
  }
  return static_cast<std::uint16_t>(port);
}

/** Ends a request of a client from outside when it takes too long or is not wanted any more. */
class Guard {
public:
  Guard(httplib::ClientImpl& client, Clock::time_point end, const std::function<bool()>& cancelled)
      : m_thread([this, &client, end, &cancelled] { watch(client, end, cancelled); }) {}
  ~Guard() {
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      m_done = true;
    }
    m_changed.notify_one();
    m_thread.join();
  }
  Guard(const Guard&) = delete;
  Guard& operator=(const Guard&) = delete;

private:
  void watch(httplib::ClientImpl& client, Clock::time_point end, const std::function<bool()>& cancelled) {
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_changed.wait_for(lock, GLANCE, [this] { return m_done; })) {
      if (Clock::now() >= end || cancelled()) {
        client.stop();  // again and again: one before the request has begun has no effect
      }
    }
  }

  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_done = false;
  std::thread m_thread;
};

std::unique_ptr<httplib::ClientImpl>
makeClient(const Destination& destination, const ExportAttempt& attempt) {
  std::unique_ptr<httplib::ClientImpl> client;
  if (destination.tls) {
    client = std::make_unique<httplib::SSLClient>(destination.host, destination.port);
    client->enable_server_certificate_verification(true);
    if (!attempt.certificates.empty()) {
      client->set_ca_cert_path(attempt.certificates);
    }
  } else {
    client = std::make_unique<httplib::ClientImpl>(destination.host, destination.port);
  }
  client->set_connection_timeout(std::min(attempt.limit, LONGEST_CONNECTING));
  client->set_read_timeout(attempt.limit);
  client->set_write_timeout(attempt.limit);
  client->set_follow_location(false);
  client->set_url_encode(false);
  return client;
}

std::string describe(httplib::Error error, bool tooLong) {
  if (tooLong) {
    return "it did not answer in time";
  }
  switch (error) {
  case httplib::Error::Connection:
    return "it cannot be connected to";
  case httplib::Error::ConnectionTimeout:
    return "the connection was not made in time";
  case httplib::Error::SSLConnection:
    return "TLS could not be agreed on";
  case httplib::Error::SSLLoadingCerts:
    return "the trusted certificates cannot be read";
  case httplib::Error::SSLServerVerification:
    return "its certificate is not trusted";
  default:
    return "it did not answer with HTTP";
  }
}

}  // namespace

Destination Destination::parse(const std::string& url) {
  Destination result;
  const std::size_t scheme = url.find("://");
  const std::string name = scheme == std::string::npos ? "" : url.substr(0, scheme);
  if (!equalNames(name, "http") && !equalNames(name, "https")) {
    refuse(url, "it begins with neither http:// nor https://");
  }
  const bool unprintable = std::any_of(
      url.begin(), url.end(), [](char character) { return character <= ' ' || character == '\x7f'; });
  if (unprintable) {
    refuse(url, "blanks and characters that are not ASCII are written as %XX");
  }
  result.tls = equalNames(name, "https");
  const std::size_t begin = scheme + 3;
  const std::size_t end = std::min(url.find_first_of("/?#", begin), url.size());
  const std::string authority = url.substr(begin, end - begin);
  result.path = url.substr(end, url.find('#', end) - end);
  if (result.path.empty() || result.path.front() != '/') {
    result.path.insert(0, 1, '/');
  }
  if (authority.find('@') != std::string::npos) {
    refuse(url, "a destination has no user");
  }
  const bool bracketed = !authority.empty() && authority.front() == '[';
  const std::size_t hostEnd = bracketed ? authority.find(']') : authority.find(':');
  if (bracketed && hostEnd == std::string::npos) {
    refuse(url, "the address has no closing bracket");
  }
  result.host = bracketed ? authority.substr(1, hostEnd - 1) : authority.substr(0, hostEnd);
  if (result.host.empty()) {
    refuse(url, "it has no host");
  }
  const std::string rest =
      hostEnd == std::string::npos ? "" : authority.substr(hostEnd + (bracketed ? 1 : 0));
  result.port = static_cast<std::uint16_t>(result.tls ? 443 : 80);
  if (!rest.empty()) {
    if (rest.front() != ':') {
      refuse(url, "a colon is expected in front of the port");
    }
    result.port = portOf(url, rest.substr(1));
  }
  return result;
}

std::string postExport(
    const Destination& destination, const std::string& message, const ExportAttempt& attempt,
    const std::function<bool()>& cancelled) {
  const std::unique_ptr<httplib::ClientImpl> client = makeClient(destination, attempt);
  httplib::Request request;
  request.method = "POST";
  request.path = destination.path;
  request.headers = {
      {"Content-Type", "application/xml; charset=utf-8"},
      {"CIMExport", "MethodRequest"},
      {"CIMExportMethod", "ExportIndication"}};
  request.body = message;
  std::size_t received = 0;
  request.content_receiver = [&received](const char*, std::size_t size, std::uint64_t, std::uint64_t) {
    received += size;
    return received <= LONGEST_ANSWER;
  };
  httplib::Response response;
  httplib::Error error = httplib::Error::Success;
  const Clock::time_point end = Clock::now() + attempt.limit;
  {
    const Guard guard(*client, end, cancelled);
    client->send(request, response, error);
  }
  // What counts is the status: with it, the listener has the indication.
  if (response.status <= 0) {
    return describe(error, Clock::now() >= end);
  }
  return response.status / 100 == 2 ? "" : "it answered with HTTP status " + std::to_string(response.status);
}

}  // namespace tvp::host::cimxml
