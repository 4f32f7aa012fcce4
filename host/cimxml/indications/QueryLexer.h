// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_INDICATIONS_QUERYLEXER_H
#define HOST_CIMXML_INDICATIONS_QUERYLEXER_H

#include "host/schema/Value.h"

#include <cstddef>
#include <string>

namespace tvp::host::cimxml {

/** A word of a query. */
struct QueryToken {
  enum class Kind { Name, Literal, Symbol, End };
  Kind kind = Kind::End;
  std::string text;  ///< of a name or a symbol; of a literal as it was written
  Value literal;     ///< CMPI_string, CMPI_sint64, CMPI_uint64 or CMPI_real64

  bool isSymbol(const char* symbol) const { return kind == Kind::Symbol && text == symbol; }
  /** Keywords are compared ignoring case. */
  bool isWord(const char* word) const;
};

/** Splits the text of a query into tokens. */
class QueryLexer {
public:
  /** @param text has to outlive the lexer */
  explicit QueryLexer(const std::string& text) : m_text(text) {}

  /** The next token; Kind::End at the end, again and again. @throws CimFailure for what is not one */
  QueryToken next();

private:
  QueryToken takeName();
  QueryToken takeNumber();
  QueryToken takeString();
  QueryToken takeSymbol();
  char at(std::size_t offset) const;

  const std::string& m_text;
  std::size_t m_position = 0;
};

/** @throws CimFailure with CMPI_RC_ERR_INVALID_QUERY */
[[noreturn]] void failQuery(const std::string& problem);

}  // namespace tvp::host::cimxml

#endif
