// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/client/ServerUrl.h"

#include "host/schema/Names.h"
#include "text/Quote.h"

#include <stdexcept>

namespace tvp::host::cimxml {
namespace {

constexpr unsigned LARGEST_PORT = 65535;

[[noreturn]] void refuse(const std::string& text, const std::string& reason) {
  throw std::invalid_argument(
      text::quoted(text) + " is not the URL of a server: " + reason +
      "; write http://USER@HOST:PORT or https://USER@HOST:PORT");
}

[[noreturn]] void refusePassword() {
  throw std::invalid_argument(
      "the URL has a password, which every user of this machine could see; leave it out, "
      "so that it is asked for or read from a file");
}

bool isHexadecimal(char letter) {
  return std::string_view("0123456789abcdefABCDEF").find(letter) != std::string_view::npos;
}

/** The user of a URL, in which any byte may be written as %XX. */
std::string decoded(const std::string& url, const std::string& text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      result += text[i];
    } else if (i + 2 < text.size() && isHexadecimal(text[i + 1]) && isHexadecimal(text[i + 2])) {
      result += static_cast<char>(std::stoul(text.substr(i + 1, 2), nullptr, 16));
      i += 2;
    } else {
      refuse(url, "'%' in the user begins a byte of two hexadecimal digits");
    }
  }
  return result;
}

std::uint16_t portOf(const std::string& url, const std::string& text) {
  constexpr std::size_t LONGEST = 5;
  const bool digits =
      !text.empty() && text.size() <= LONGEST && text.find_first_not_of("0123456789") == std::string::npos;
  const unsigned long port = digits ? std::stoul(text) : 0;
  if (port == 0 || port > LARGEST_PORT) {
    refuse(url, "the port is a number from 1 to " + std::to_string(LARGEST_PORT));
  }
  return static_cast<std::uint16_t>(port);
}

/** Splits "HOST:PORT" or "[ADDRESS]:PORT". */
void readAuthority(const std::string& text, const std::string& authority, ServerUrl& url) {
  const bool bracketed = !authority.empty() && authority.front() == '[';
  const std::size_t end = bracketed ? authority.find(']') : authority.find(':');
  if (bracketed && end == std::string::npos) {
    refuse(text, "the bracket of its address is not closed");
  }
  url.host = bracketed ? authority.substr(1, end - 1) : authority.substr(0, end);
  const std::string rest = end == std::string::npos ? "" : authority.substr(bracketed ? end + 1 : end);
  if (url.host.empty() || url.host.find_first_of(" \t\"<>\\^`{|}") != std::string::npos) {
    refuse(text, "it has no host");
  }
  if (!rest.empty()) {
    if (rest.front() != ':' || rest.find(':', 1) != std::string::npos) {
      refuse(text, "what follows the host is not a port; an IPv6 address is written in brackets");
    }
    url.port = portOf(text, rest.substr(1));
  }
}

}  // namespace

ServerUrl ServerUrl::parse(const std::string& text) {
  ServerUrl url;
  const std::size_t mark = text.find("://");
  const std::size_t start = mark == std::string::npos ? 0 : mark + 3;
  const std::size_t slash = text.find_first_of("/?#", start);
  std::string authority = text.substr(start, slash == std::string::npos ? slash : slash - start);
  const std::size_t at = authority.rfind('@');
  if (at != std::string::npos && authority.find(':') < at) {
    refusePassword();
  }
  const std::string scheme = lowerCase(mark == std::string::npos ? "" : text.substr(0, mark));
  if (scheme != "http" && scheme != "https") {
    refuse(text, "it does not begin with http:// or https://");
  }
  for (const char byte : text) {
    if (static_cast<unsigned char>(byte) <= ' ' || byte == '\x7F') {
      refuse(text, "it has a blank or a control character");
    }
  }
  url.tls = scheme == "https";
  url.port = url.tls ? 5989 : 5988;
  if (at != std::string::npos) {
    url.user = decoded(text, authority.substr(0, at));
    if (url.user.find(':') != std::string::npos) {
      refusePassword();
    }
    if (url.user.empty()) {
      refuse(text, "its user has no name");
    }
    authority.erase(0, at + 1);
  }
  readAuthority(text, authority, url);
  if (slash != std::string::npos && text.substr(slash) != "/") {
    url.path = text.substr(slash);
    if (url.path.front() != '/' || url.path.find_first_of("?#") != std::string::npos) {
      refuse(text, "it ends with its path");
    }
  }
  return url;
}

bool ServerUrl::isLoopback() const {
  const bool loopbackAddress =
      host.compare(0, 4, "127.") == 0 && host.find_first_not_of("0123456789.") == std::string::npos;
  return loopbackAddress || host == "::1" || equalNames(host, "localhost");
}

std::string ServerUrl::authority() const {
  return (host.find(':') == std::string::npos ? host : "[" + host + "]") + ":" + std::to_string(port);
}

std::string ServerUrl::text() const {
  return (tls ? "https://" : "http://") + authority();
}

}  // namespace tvp::host::cimxml
