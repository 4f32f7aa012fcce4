// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/server/RequestHead.h"

#include "host/schema/Names.h"
#include "text/Trim.h"

#include <algorithm>
#include <array>
#include <map>
#include <vector>

namespace tvp::host::cimxml {
namespace {

constexpr std::string_view END_OF_LINE = "\r\n";

/** The headers that decide how a request is understood; any other may come as often as it likes. */
constexpr std::array<std::string_view, 12> ONCE = {
    "authorization",    "cimexport",      "cimexportmethod", "cimmethod",
    "cimobject",        "cimoperation",   "expect",          "cimprotocolversion",
    "content-encoding", "content-length", "content-type",    "transfer-encoding"};

using Headers = std::map<std::string, std::string, NameLess>;

std::string_view nextLine(std::string_view& rest) {
  const std::size_t end = rest.find(END_OF_LINE);
  const std::string_view line = rest.substr(0, end);
  rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + END_OF_LINE.size());
  return line;
}

bool isToken(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
           std::string_view("!#$%&'*+-.^_`|~").find(c) != std::string_view::npos;
  });
}

bool hasControls(std::string_view text) {
  return std::any_of(
      text.begin(), text.end(), [](char c) { return (c >= 0 && c < ' ' && c != '\t') || c == '\x7F'; });
}

std::optional<Refusal> refusalOfRequestLine(std::string_view line, std::string& method) {
  const std::size_t first = line.find(' ');
  const std::size_t second = first == std::string_view::npos ? first : line.find(' ', first + 1);
  if (second == std::string_view::npos) {
    return Refusal{400, "The request does not begin with a request line of HTTP."};
  }
  method = line.substr(0, first);
  const std::string_view target = line.substr(first + 1, second - first - 1);
  const std::string_view version = line.substr(second + 1);
  if (!isToken(method) || target.empty() || hasControls(target) || version.substr(0, 5) != "HTTP/") {
    return Refusal{400, "The request does not begin with a request line of HTTP."};
  }
  if (version != "HTTP/1.1" && version != "HTTP/1.0") {
    return Refusal{505, "The version is not one of HTTP/1.1 and HTTP/1.0."};
  }
  if (method == "POST" || method == "GET" || method == "HEAD") {
    return std::nullopt;
  }
  constexpr std::array<const char*, 6> KNOWN = {"CONNECT", "DELETE", "OPTIONS", "PATCH", "PUT", "TRACE"};
  const bool known = std::find(KNOWN.begin(), KNOWN.end(), method) != KNOWN.end();
  return Refusal{known ? 405 : 501, "The method is not one of POST, GET and HEAD."};
}

std::optional<Refusal> readHeaders(std::string_view rest, Headers& headers) {
  while (!rest.empty()) {
    const std::string_view line = nextLine(rest);
    if (line.empty()) {
      break;
    }
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos || !isToken(line.substr(0, colon)) || hasControls(line)) {
      return Refusal{400, "A header is malformed."};
    }
    const std::string name = lowerCase(std::string(line.substr(0, colon)));
    const std::string_view value = text::trimmed(line.substr(colon + 1), " \t");
    const bool added = headers.emplace(name, value).second;
    if (!added && std::find(ONCE.begin(), ONCE.end(), name) != ONCE.end()) {
      return Refusal{400, "The header " + name + " comes more than once."};
    }
  }
  return std::nullopt;
}

std::optional<Refusal> refusalOfLength(const std::string& length, std::size_t longestBody) {
  if (length.empty() || length.find_first_not_of("0123456789") != std::string::npos) {
    return Refusal{400, "Content-Length is not a number."};
  }
  const std::size_t digit = std::min(length.find_first_not_of('0'), length.size() - 1);
  constexpr std::size_t MOST_DIGITS = 18;  // which fit 64 bits
  if (length.size() - digit > MOST_DIGITS || std::stoull(length.substr(digit)) > longestBody) {
    return Refusal{413, "The body is longer than " + std::to_string(longestBody) + " bytes."};
  }
  return std::nullopt;
}

std::optional<Refusal>
refusalOfFraming(const std::string& method, const Headers& headers, std::size_t longestBody) {
  const auto length = headers.find("content-length");
  const auto coding = headers.find("transfer-encoding");
  if (coding != headers.end()) {
    if (length != headers.end()) {
      return Refusal{400, "Content-Length and Transfer-Encoding contradict each other."};
    }
    if (!equalNames(coding->second, "chunked")) {
      return Refusal{501, "Transfer-Encoding is not chunked."};
    }
  }
  if (length != headers.end()) {
    if (auto refusal = refusalOfLength(length->second, longestBody)) {
      return refusal;
    }
  }
  if (method == "POST") {
    const bool measured = length != headers.end() || coding != headers.end();
    return measured ? std::nullopt : std::optional(Refusal{411, "Content-Length is missing."});
  }
  const bool empty = coding == headers.end() &&
                     (length == headers.end() || length->second.find_first_not_of('0') == std::string::npos);
  return empty ? std::nullopt : std::optional(Refusal{400, "A " + method + " has no body."});
}

std::optional<Refusal> refusalOfFeatures(const Headers& headers) {
  const auto value = [&headers](const char* name) {
    const auto found = headers.find(name);
    return found == headers.end() ? std::string() : lowerCase(found->second);
  };
  if (headers.count("range") != 0) {
    return Refusal{416, "An answer is not available in parts."};
  }
  const std::string encoding = value("content-encoding");
  if (!encoding.empty() && encoding != "identity") {
    return Refusal{415, "A compressed body is not understood."};  // a few bytes could become gigabytes
  }
  if (value("content-type").rfind("multipart/", 0) == 0) {
    return Refusal{415, "The body is not CIM-XML."};
  }
  const std::string expectation = value("expect");
  if (!expectation.empty() && expectation != "100-continue") {
    return Refusal{417, "The expectation is not 100-continue."};
  }
  // A browser that a page of somebody else makes send requests names that page; no client of CIM-XML does.
  if (headers.count("origin") != 0) {
    return Refusal{403, "Requests of web pages are not answered."};
  }
  return std::nullopt;
}

const char* phraseOf(int status) {
  static const std::map<int, const char*> PHRASES = {
      {400, "Bad Request"},
      {403, "Forbidden"},
      {405, "Method Not Allowed"},
      {408, "Request Timeout"},
      {411, "Length Required"},
      {413, "Payload Too Large"},
      {414, "URI Too Long"},
      {415, "Unsupported Media Type"},
      {416, "Range Not Satisfiable"},
      {417, "Expectation Failed"},
      {431, "Request Header Fields Too Large"},
      {501, "Not Implemented"},
      {503, "Service Unavailable"},
      {505, "HTTP Version Not Supported"}};
  const auto found = PHRASES.find(status);
  return found == PHRASES.end() ? "Refused" : found->second;
}

}  // namespace

std::string refusalText(const Refusal& refusal) {
  return "HTTP/1.1 " + std::to_string(refusal.status) + " " + phraseOf(refusal.status) + "\r\n" +
         (refusal.status == 405 ? "Allow: POST, GET, HEAD\r\n" : "") +
         "Connection: close\r\nContent-Type: text/plain; charset=utf-8\r\nContent-Length: " +
         std::to_string(refusal.reason.size() + 1) + "\r\n\r\n" + refusal.reason + "\n";
}

std::optional<Refusal> refusalOf(std::string_view head, std::size_t longestBody) {
  std::string method;
  if (auto refusal = refusalOfRequestLine(nextLine(head), method)) {
    return refusal;
  }
  Headers headers;
  if (auto refusal = readHeaders(head, headers)) {
    return refusal;
  }
  if (auto refusal = refusalOfFraming(method, headers, longestBody)) {
    return refusal;
  }
  return refusalOfFeatures(headers);
}

}  // namespace tvp::host::cimxml
