// SPDX-License-Identifier: Apache-2.0
#include "host/schema/MofLexer.h"

#include "host/schema/MofReader.h"
#include "host/schema/Names.h"

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace tvp::host {
namespace {

bool isLetter(char letter) {
  return std::isalpha(static_cast<unsigned char>(letter)) != 0 || letter == '_';
}

bool isDigit(char letter) {
  return letter >= '0' && letter <= '9';
}

}  // namespace

bool MofToken::isWord(const char* word) const {
  return kind == Kind::Name && equalNames(text.c_str(), word);
}

std::string MofToken::description() const {
  switch (kind) {
  case Kind::End:
    return "the end of the file";
  case Kind::String:
    return "the text \"" + text + "\"";
  default:
    return "'" + text + "'";
  }
}

MofLexer::MofLexer(const std::string& text, const std::string& fileName)
    : m_text(text), m_fileName(fileName) {}

MofToken MofLexer::next() {
  skipBlanks();
  MofToken token;
  token.line = m_line;
  if (m_position >= m_text.size()) {
    return token;
  }
  const char first = current();
  if (first == '"') {
    return readString();
  }
  if (isDigit(first) ||
      ((first == '-' || first == '+') && m_position + 1 < m_text.size() && isDigit(m_text[m_position + 1]))) {
    return readNumber();
  }
  if (isLetter(first)) {
    const std::size_t start = m_position;
    while (isLetter(current()) || isDigit(current())) {
      ++m_position;
    }
    token.kind = MofToken::Kind::Name;
    token.text = m_text.substr(start, m_position - start);
    return token;
  }
  if (first == '\0' || std::strchr("[](){}:;,=", first) == nullptr) {
    fail(
        std::isprint(static_cast<unsigned char>(first)) != 0
            ? "unexpected character '" + std::string(1, first) + "'"
            : "unexpected byte " + std::to_string(static_cast<unsigned char>(first)));
  }
  token.kind = MofToken::Kind::Symbol;
  token.text = std::string(1, first);
  ++m_position;
  return token;
}

void MofLexer::skipBlanks() {
  while (m_position < m_text.size()) {
    if (current() == '\n') {
      ++m_line;
      ++m_position;
    } else if (std::isspace(static_cast<unsigned char>(current())) != 0) {
      ++m_position;
    } else if (startsWith("//") || startsWith("#pragma") || startsWith("#PRAGMA")) {
      while (m_position < m_text.size() && current() != '\n') {
        ++m_position;
      }
    } else if (startsWith("/*")) {
      skipComment();
    } else {
      return;
    }
  }
}

void MofLexer::skipComment() {
  const unsigned int start = m_line;
  for (m_position += 2; !startsWith("*/"); ++m_position) {
    if (m_position >= m_text.size()) {
      throw MofError(m_fileName, start, "this comment has no end, expected */");
    }
    m_line += current() == '\n' ? 1U : 0U;
  }
  m_position += 2;
}

MofToken MofLexer::readString() {
  MofToken token;
  token.kind = MofToken::Kind::String;
  token.line = m_line;
  for (++m_position; current() != '"'; ++m_position) {
    if (m_position >= m_text.size() || current() == '\n') {
      fail("this text has no end, expected a closing quote");
    }
    token.text += current() == '\\' ? readEscape() : current();
  }
  ++m_position;
  return token;
}

char MofLexer::readEscape() {
  ++m_position;
  switch (current()) {
  case 'n':
    return '\n';
  case 't':
    return '\t';
  case 'r':
    return '\r';
  case 'b':
    return '\b';
  case 'f':
    return '\f';
  case '"':
  case '\'':
  case '\\':
    return current();
  default:
    fail("unknown escape in a text, expected one of \\n \\t \\r \\b \\f \\\" \\' \\\\");
  }
}

MofToken MofLexer::readNumber() {
  const std::size_t start = m_position++;
  while (isDigit(current()) || isLetter(current()) || current() == '.' ||
         ((current() == '-' || current() == '+') &&
          (m_text[m_position - 1] == 'e' || m_text[m_position - 1] == 'E'))) {
    ++m_position;
  }
  MofToken token;
  token.line = m_line;
  token.text = m_text.substr(start, m_position - start);
  char* end = nullptr;
  errno = 0;
  const bool hexadecimal = token.text.find_first_of("xX") != std::string::npos;
  if (!hexadecimal && token.text.find_first_of(".eE") != std::string::npos) {
    token.kind = MofToken::Kind::Real;
    token.real = std::strtod(token.text.c_str(), &end);
  } else {
    token.kind = MofToken::Kind::Integer;
    token.integer = std::strtoll(token.text.c_str(), &end, hexadecimal ? 16 : 10);
  }
  if (*end != '\0' || errno == ERANGE) {
    fail("'" + token.text + "' is not a number of at most 64 bits");
  }
  return token;
}

bool MofLexer::startsWith(const char* text) const {
  return m_text.compare(m_position, std::strlen(text), text) == 0;
}

void MofLexer::fail(const std::string& problem) const {
  throw MofError(m_fileName, m_line, problem);
}

}  // namespace tvp::host
