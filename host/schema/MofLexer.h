// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_SCHEMA_MOFLEXER_H
#define HOST_SCHEMA_MOFLEXER_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace tvp::host {

/** A word of a MOF text. */
struct MofToken {
  enum class Kind { Name, String, Integer, Real, Symbol, End };

  Kind kind = Kind::End;
  std::string text;          ///< a name, the content of a literal, or the symbol
  std::int64_t integer = 0;  ///< of an integer
  double real = 0;           ///< of a real
  unsigned int line = 1;

  bool isSymbol(char symbol) const { return kind == Kind::Symbol && text[0] == symbol; }
  /** Whether it is this keyword, ignoring case. */
  bool isWord(const char* word) const;
  /** The token as shown in messages. */
  std::string description() const;
};

/** Splits a MOF text into words; skips blanks, comments and #pragma lines. */
class MofLexer {
public:
  /** Both texts must outlive the lexer; the file name is used in messages. */
  MofLexer(const std::string& text, const std::string& fileName);

  /** The next word; Kind::End at the end, however often it is called. @throws MofError */
  MofToken next();

private:
  void skipBlanks();
  void skipComment();
  MofToken readString();
  MofToken readNumber();
  char readEscape();
  bool startsWith(const char* text) const;
  char current() const { return m_position < m_text.size() ? m_text[m_position] : '\0'; }
  [[noreturn]] void fail(const std::string& problem) const;

  const std::string& m_text;
  const std::string& m_fileName;
  std::size_t m_position = 0;
  unsigned int m_line = 1;
};

}  // namespace tvp::host

#endif
