// SPDX-License-Identifier: Apache-2.0
#include "host/schema/ObjectPathText.h"

#include <cctype>
#include <cerrno>
#include <cstdlib>

namespace tvp::host {
namespace {

bool isNameLetter(char letter) {
  return std::isalnum(static_cast<unsigned char>(letter)) != 0 || letter == '_';
}

/** Reads a path text from left to right. */
class PathReader {
public:
  explicit PathReader(const std::string& text) : m_text(text) {}

  ObjectPath read() {
    ObjectPath path;
    if (m_text.compare(0, 2, "//") == 0) {
      const std::size_t end = m_text.find('/', 2);
      if (end == std::string::npos) {
        fail("a slash after the host name");
      }
      if (end == 2) {  // written back, what follows would become a host
        fail("a host name between the slashes");
      }
      path.host = m_text.substr(2, end - 2);
      m_position = end + 1;
    }
    readNameSpace(path);
    path.className = readName("a class name");
    if (atEnd()) {
      return path;
    }
    expect('.', "a dot before the first key, or the end");
    do {
      readKey(path);
    } while (take(','));
    if (!atEnd()) {
      fail("a comma before the next key, or the end");
    }
    return path;
  }

private:
  void readNameSpace(ObjectPath& path) {
    const std::size_t colon = m_text.find(':', m_position);
    if (colon == std::string::npos || m_text.find_first_of(".=\"", m_position) < colon) {
      return;
    }
    path.nameSpace = m_text.substr(m_position, colon - m_position);
    m_position = colon + 1;
  }

  void readKey(ObjectPath& path) {
    const std::string name = readName("the name of a key");
    expect('=', "an equals sign after the key's name");
    if (path.key(name) != nullptr) {
      throw PathSyntaxError("the key " + name + " is given twice in: " + m_text);
    }
    path.keys.push_back({name, readValue()});
  }

  Value readValue() {
    if (take('"')) {
      return Value::string(readQuoted());
    }
    const std::size_t start = m_position;
    while (!atEnd() && m_text[m_position] != ',') {
      ++m_position;
    }
    const std::string word = m_text.substr(start, m_position - start);
    if (word == "TRUE" || word == "true") {
      return Value::boolean(true);
    }
    if (word == "FALSE" || word == "false") {
      return Value::boolean(false);
    }
    char* end = nullptr;
    errno = 0;
    const long long number = std::strtoll(word.c_str(), &end, 10);
    if (word.empty() || *end != '\0' || std::isspace(static_cast<unsigned char>(word.front())) != 0) {
      m_position = start;
      fail("a number, TRUE, FALSE or a text in quotes");
    }
    if (errno == ERANGE) {
      m_position = start;
      fail("a number of at most 64 bits");
    }
    return Value::sint64(number);
  }

  std::string readQuoted() {
    std::string result;
    while (!atEnd() && m_text[m_position] != '"') {
      if (m_text[m_position] == '\\' && m_position + 1 < m_text.size()) {
        ++m_position;
      }
      result += m_text[m_position++];
    }
    expect('"', "the closing quote");
    return result;
  }

  std::string readName(const char* what) {
    const std::size_t start = m_position;
    while (!atEnd() && isNameLetter(m_text[m_position])) {
      ++m_position;
    }
    if (start == m_position) {
      fail(what);
    }
    return m_text.substr(start, m_position - start);
  }

  bool atEnd() const { return m_position >= m_text.size(); }

  bool take(char letter) {
    if (atEnd() || m_text[m_position] != letter) {
      return false;
    }
    ++m_position;
    return true;
  }

  void expect(char letter, const char* what) {
    if (!take(letter)) {
      fail(what);
    }
  }

  [[noreturn]] void fail(const char* expected) const {
    throw PathSyntaxError(
        "expected " + std::string(expected) +
        (atEnd() ? " at the end of: " : " at character " + std::to_string(m_position + 1) + " of: ") +
        m_text);
  }

  const std::string& m_text;
  std::size_t m_position = 0;
};

}  // namespace

std::string toPathText(const ObjectPath& path) {
  std::string result = path.host.empty() ? "" : "//" + path.host + "/";
  result += path.nameSpace.empty() ? path.className : path.nameSpace + ":" + path.className;
  const char* separator = ".";
  for (const NamedValue& key : path.keys) {
    result += separator + key.name + "=" + key.value.toText();
    separator = ",";
  }
  return result;
}

ObjectPath parsePathText(const std::string& text) {
  return PathReader(text).read();
}

}  // namespace tvp::host
