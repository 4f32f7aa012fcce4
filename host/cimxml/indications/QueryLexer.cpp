// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/indications/QueryLexer.h"

#include "host/cimxml/message/Failure.h"
#include "host/schema/Names.h"
#include "text/Quote.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <string_view>

namespace tvp::host::cimxml {
namespace {

constexpr std::string_view DIGITS = "0123456789";

bool isDigit(char character) {
  return DIGITS.find(character) != std::string_view::npos;
}

bool isNameStart(char character) {
  const char lower = static_cast<char>(character | 0x20);
  return (lower >= 'a' && lower <= 'z') || character == '_' || (character & 0x80) != 0;
}

}  // namespace

void failQuery(const std::string& problem) {
  throw CimFailure(CMPI_RC_ERR_INVALID_QUERY, problem);
}

bool QueryToken::isWord(const char* word) const {
  return kind == Kind::Name && equalNames(text, word);
}

char QueryLexer::at(std::size_t offset) const {
  return m_position + offset < m_text.size() ? m_text[m_position + offset] : '\0';
}

QueryToken QueryLexer::next() {
  m_position = m_text.find_first_not_of(" \t\r\n", m_position);
  if (m_position == std::string::npos) {
    m_position = m_text.size();
    return {};
  }
  const char first = at(0);
  if (isNameStart(first)) {
    return takeName();
  }
  if (isDigit(first) || ((first == '-' || first == '+' || first == '.') && isDigit(at(1))) ||
      ((first == '-' || first == '+') && at(1) == '.' && isDigit(at(2)))) {
    return takeNumber();
  }
  return first == '\'' || first == '"' ? takeString() : takeSymbol();
}

/** A name, possibly with the names that it belongs to: "TVP_Class.Property". */
QueryToken QueryLexer::takeName() {
  const std::size_t start = m_position;
  while (isNameStart(at(0)) || isDigit(at(0)) || (at(0) == '.' && isNameStart(at(1)))) {
    ++m_position;
  }
  QueryToken token;
  token.kind = QueryToken::Kind::Name;
  token.text = m_text.substr(start, m_position - start);
  return token;
}

QueryToken QueryLexer::takeNumber() {
  QueryToken token;
  token.kind = QueryToken::Kind::Literal;
  const char* begin = m_text.c_str() + m_position;
  char* end = nullptr;
  errno = 0;
  const double real = std::strtod(begin, &end);
  token.text.assign(begin, static_cast<const char*>(end));
  if (!std::isfinite(real) || isNameStart(*end)) {
    failQuery("the number at " + text::quoted(m_text.substr(m_position, 20)) + " cannot be read");
  }
  m_position += token.text.size();
  if (token.text.find_first_not_of("+-0123456789") != std::string::npos) {
    token.literal = Value::real(CMPI_real64, real);
    return token;
  }
  errno = 0;
  token.literal = token.text.front() == '-' ? Value::sint64(std::strtoll(token.text.c_str(), nullptr, 10))
                                            : Value::uint64(std::strtoull(token.text.c_str(), nullptr, 10));
  if (errno == ERANGE) {
    failQuery("the number " + token.text + " does not fit in 64 bits");
  }
  return token;
}

/** A text in quotes; a doubled quote or a backslash stands for the quote itself. */
QueryToken QueryLexer::takeString() {
  const std::size_t start = m_position;
  const char quote = m_text[m_position++];
  std::string content;
  for (; m_position < m_text.size(); ++m_position) {
    const bool doubled = at(0) == quote && at(1) == quote;
    const bool escaped = at(0) == '\\' && (at(1) == quote || at(1) == '\\');
    if (at(0) == quote && !doubled) {
      ++m_position;
      QueryToken token;
      token.kind = QueryToken::Kind::Literal;
      token.text = m_text.substr(start, m_position - start);
      token.literal = Value::string(std::move(content));
      return token;
    }
    m_position += doubled || escaped ? 1 : 0;
    content += at(0);
  }
  failQuery("the text that begins at " + text::quoted(m_text.substr(start, 20)) + " has no closing quote");
}

QueryToken QueryLexer::takeSymbol() {
  QueryToken token;
  token.kind = QueryToken::Kind::Symbol;
  for (const char* symbol : {"<>", "!=", "<=", ">=", "=", "<", ">", "(", ")", ",", "*"}) {
    const std::string_view candidate = symbol;
    if (m_text.compare(m_position, candidate.size(), candidate) == 0) {
      m_position += candidate.size();
      token.text = candidate;
      return token;
    }
  }
  failQuery("a query has nothing like " + text::quoted(m_text.substr(m_position, 1)));
}

}  // namespace tvp::host::cimxml
