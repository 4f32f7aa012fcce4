// SPDX-License-Identifier: Apache-2.0
#include "host/schema/MofReader.h"

#include "host/schema/MofLexer.h"
#include "host/schema/Names.h"
#include "host/schema/RegularFile.h"

#include <algorithm>
#include <utility>

namespace tvp::host {
namespace {

constexpr std::size_t LARGEST_FILE = 16 << 20;  ///< bytes; the whole standard schema in one file is smaller

/** Reads declarations by recursive descent, one token ahead. */
class Parser {
public:
  Parser(const std::string& text, const std::string& fileName)
      : m_fileName(fileName), m_lexer(text, fileName) {
    advance();
  }

  std::shared_ptr<const Schema> parse() {
    while (m_token.kind != MofToken::Kind::End) {
      if (m_token.isWord("qualifier")) {
        skipQualifierDeclaration();
      } else {
        parseClass();
      }
    }
    return m_schema;
  }

private:
  void skipQualifierDeclaration() {
    while (!m_token.isSymbol(';')) {
      if (m_token.kind == MofToken::Kind::End) {
        fail("a semicolon after the qualifier declaration");
      }
      advance();
    }
    advance();
  }

  void parseClass() {
    SchemaClass declared;
    declared.qualifiers = parseQualifiers();
    const unsigned int line = m_token.line;
    if (!m_token.isWord("class")) {
      fail("a class declaration");
    }
    advance();
    declared.name = takeName("the name of the class");
    if (takeSymbol(':')) {
      declared.superclass = takeName("the name of the superclass");
    }
    expectSymbol('{', "{ before the features of the class");
    while (!takeSymbol('}')) {
      parseFeature(declared);
    }
    expectSymbol(';', "a semicolon after the class");
    try {
      m_schema->add(std::move(declared));
    } catch (const std::invalid_argument& problem) {
      throw MofError(m_fileName, line, problem.what());
    }
  }

  void parseFeature(SchemaClass& declared) {
    SchemaProperty property;
    property.qualifiers = parseQualifiers();
    const unsigned int line = m_token.line;
    parseTypeAndName(property, "a property, a method or } at the end of the class");
    if (m_token.isSymbol('(')) {
      SchemaMethod method;
      static_cast<TypedElement&>(method) = std::move(property);
      parseParameters(method);
      rejectSecond(declared.methods, method.name, "method", line);
      declared.methods.push_back(std::move(method));
    } else {
      parseArrayMark(property);
      if (takeSymbol('=')) {
        parseValue();  // an initial value, which providers' instances never rely on
      }
      applyEmbedding(property, line);
      property.key = flag(property.qualifiers, "Key", false);
      property.writable = flag(property.qualifiers, "Write", false);
      rejectSecond(declared.properties, property.name, "property", line);
      declared.properties.push_back(std::move(property));
    }
    expectSymbol(';', "a semicolon after the feature");
  }

  void parseParameters(SchemaMethod& method) {
    advance();
    if (takeSymbol(')')) {
      return;
    }
    do {
      SchemaParameter parameter;
      parameter.qualifiers = parseQualifiers();
      const unsigned int line = m_token.line;
      parseTypeAndName(parameter, "a parameter");
      parseArrayMark(parameter);
      applyEmbedding(parameter, line);
      parameter.out = flag(parameter.qualifiers, "Out", false);
      parameter.in = flag(parameter.qualifiers, "In", true);
      rejectSecond(method.parameters, parameter.name, "parameter", line);
      method.parameters.push_back(std::move(parameter));
    } while (takeSymbol(','));
    expectSymbol(')', "a comma or ) after the parameter");
  }

  /** "uint32 Name", or "Class REF Name". */
  void parseTypeAndName(TypedElement& element, const char* what) {
    const MofToken typeToken = m_token;
    const std::string word = takeName(what);
    if (m_token.isWord("ref")) {
      advance();
      element.type = CMPI_ref;
      element.className = word;
    } else if (const std::optional<CMPIType> type = typeOfName(word)) {
      element.type = *type;
    } else {
      throw MofError(
          m_fileName, typeToken.line,
          "expected a type such as uint32, string or boolean, or a class and REF, found '" + word + "'");
    }
    element.name = takeName("a name after the type");
  }

  void parseArrayMark(TypedElement& element) {
    if (!takeSymbol('[')) {
      return;
    }
    if (m_token.kind == MofToken::Kind::Integer) {
      advance();
    }
    expectSymbol(']', "] after the array mark");
    element.type = static_cast<CMPIType>(element.type | CMPI_ARRAY);
  }

  /** A string becomes an instance if its qualifier says that it contains one. */
  void applyEmbedding(TypedElement& element, unsigned int line) {
    const bool anyObject = flag(element.qualifiers, "EmbeddedObject", false);
    const Value* className = element.qualifier("EmbeddedInstance");
    if (className == nullptr && !anyObject) {
      return;
    }
    if ((element.type & ~CMPI_ARRAY) != CMPI_string) {
      throw MofError(
          m_fileName, line, "expected the type string for " + element.name + ", which is embedded");
    }
    element.type = static_cast<CMPIType>(CMPI_instance | (element.type & CMPI_ARRAY));
    if (className != nullptr) {
      element.className = element.text("EmbeddedInstance");
      if (m_schema->find(element.className) == nullptr) {
        throw MofError(
            m_fileName, line,
            "expected the name of a class declared before as the EmbeddedInstance of " + element.name +
                ", found '" + element.className + "'");
      }
    }
  }

  Qualifiers parseQualifiers() {
    Qualifiers result;
    if (!takeSymbol('[')) {
      return result;
    }
    do {
      const std::string name = takeName("the name of a qualifier");
      Value value = Value::boolean(true);
      if (takeSymbol('(')) {
        value = parseScalar();
        expectSymbol(')', ") after the value of the qualifier");
      } else if (m_token.isSymbol('{')) {
        value = parseList();
      }
      if (takeSymbol(':')) {
        while (m_token.kind == MofToken::Kind::Name) {
          advance();
        }
      }
      setValue(result, name, std::move(value));
    } while (takeSymbol(','));
    expectSymbol(']', "a comma or ] after the qualifier");
    return result;
  }

  Value parseValue() { return m_token.isSymbol('{') ? parseList() : parseScalar(); }

  Value parseList() {
    expectSymbol('{', "{ before a list");
    Value::List elements;
    if (!takeSymbol('}')) {
      do {
        elements.push_back(parseScalar());
      } while (takeSymbol(','));
      expectSymbol('}', "a comma or } after the value");
    }
    const CMPIType type = elements.empty() ? static_cast<CMPIType>(CMPI_string) : elements.front().type();
    return Value::array(type, std::move(elements));
  }

  Value parseScalar() {
    const MofToken token = m_token;
    if (token.kind == MofToken::Kind::String) {
      std::string text;
      for (; m_token.kind == MofToken::Kind::String; advance()) {
        text += m_token.text;
      }
      return Value::string(std::move(text));
    }
    if (token.kind == MofToken::Kind::Integer) {
      advance();
      return Value::sint64(token.integer);
    }
    if (token.kind == MofToken::Kind::Real) {
      advance();
      return Value::real(CMPI_real64, token.real);
    }
    if (token.isWord("true") || token.isWord("false")) {
      advance();
      return Value::boolean(token.isWord("true"));
    }
    if (token.isWord("null")) {
      advance();
      return Value();
    }
    fail("a text, a number, TRUE, FALSE or NULL");
  }

  static bool flag(const Qualifiers& qualifiers, const char* name, bool byDefault) {
    const Value* value = findValue(qualifiers, name);
    return value == nullptr ? byDefault : *value == Value::boolean(true);
  }

  template <class Element>
  void rejectSecond(
      const std::vector<Element>& known, const std::string& name, const char* what, unsigned int line) const {
    for (const Element& element : known) {
      if (equalNames(element.name, name)) {
        throw MofError(m_fileName, line, "the " + std::string(what) + " " + name + " is declared twice");
      }
    }
  }

  std::string takeName(const char* what) {
    if (m_token.kind != MofToken::Kind::Name) {
      fail(what);
    }
    std::string name = m_token.text;
    advance();
    return name;
  }

  bool takeSymbol(char symbol) {
    if (!m_token.isSymbol(symbol)) {
      return false;
    }
    advance();
    return true;
  }

  void expectSymbol(char symbol, const char* what) {
    if (!takeSymbol(symbol)) {
      fail(what);
    }
  }

  void advance() { m_token = m_lexer.next(); }

  [[noreturn]] void fail(const char* expected) const {
    throw MofError(
        m_fileName, m_token.line, "expected " + std::string(expected) + ", found " + m_token.description());
  }

  const std::string& m_fileName;
  MofLexer m_lexer;
  MofToken m_token;
  std::shared_ptr<Schema> m_schema = std::make_shared<Schema>();
};

}  // namespace

MofError::MofError(const std::string& file, unsigned int line, const std::string& problem)
    : std::runtime_error(
          line == 0 ? file + ": " + problem : file + ":" + std::to_string(line) + ": " + problem),
      m_line(line) {}

std::shared_ptr<const Schema> MofReader::readFile(const std::string& fileName) {
  std::string text;
  try {
    const RegularFile file(fileName);
    if (file.size() > LARGEST_FILE) {
      throw FileError("it is larger than " + std::to_string(LARGEST_FILE >> 20U) + " MiB");
    }
    text = file.read(0, LARGEST_FILE);
  } catch (const FileError& error) {
    throw MofError(fileName, 0, std::string("cannot read the schema: ") + error.what());
  }
  return readText(text, fileName);
}

std::shared_ptr<const Schema> MofReader::readText(const std::string& text, const std::string& fileName) {
  return Parser(text, fileName).parse();
}

}  // namespace tvp::host
