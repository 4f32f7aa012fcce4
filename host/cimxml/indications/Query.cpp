// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/indications/Query.h"

#include "host/cimxml/indications/QueryCondition.h"
#include "host/cimxml/indications/QueryLexer.h"
#include "host/cimxml/message/Failure.h"
#include "host/schema/Names.h"
#include "text/Quote.h"

#include <algorithm>
#include <utility>

namespace tvp::host::cimxml {
namespace {

/** Both come from clients, and are far beyond what people write. */
constexpr std::size_t LONGEST_QUERY = 16384;
constexpr unsigned int DEEPEST_NESTING = 32;

/** The parts of a query, while it is read. */
struct ParsedQuery {
  std::string className;
  std::optional<std::vector<std::string>> properties;
  ConditionPointer condition;
};

/** Reads a query by recursive descent, one token ahead. */
class QueryParser {
public:
  QueryParser(const std::string& text, const Schema& schema) : m_lexer(text), m_schema(schema) { advance(); }

  ParsedQuery parse() {
    ParsedQuery query;
    expectWord("SELECT");
    std::vector<std::string> names;
    if (!takeSymbol("*")) {
      do {
        names.push_back(takeName("* or the name of a property"));
      } while (takeSymbol(","));
    }
    expectWord("FROM");
    m_className = selectedClass(takeName("the name of a class"));
    query.className = m_className;
    if (!names.empty()) {
      query.properties.emplace();
      for (const std::string& name : names) {
        query.properties->push_back(propertyNamed(name).name);
      }
    }
    if (takeWord("WHERE")) {
      query.condition = parseDisjunction();
    }
    if (m_token.kind != QueryToken::Kind::End) {
      fail(query.condition == nullptr ? "WHERE or the end of the query" : "AND, OR or the end of the query");
    }
    return query;
  }

private:
  std::string selectedClass(const std::string& name) {
    const SchemaClass* known = m_schema.find(name);
    if (known != nullptr) {
      return known->name;
    }
    if (!equalNames(name, ROOT_OF_INDICATIONS)) {
      throw CimFailure(CMPI_RC_ERR_INVALID_CLASS, name);
    }
    return ROOT_OF_INDICATIONS;
  }

  /** A property of the class or of one below it. */
  const SchemaProperty& propertyNamed(const std::string& name) {
    std::string local = name;
    const std::size_t dot = name.find('.');
    if (dot != std::string::npos && equalNames(name.substr(0, dot), m_className)) {
      local = name.substr(dot + 1);
    }
    for (const SchemaClass* candidate : m_schema.classes()) {
      const SchemaProperty* property =
          isKindOf(m_schema, candidate->name, m_className) ? candidate->property(local) : nullptr;
      if (property != nullptr) {
        return *property;
      }
    }
    failQuery(m_className + " has no property " + text::quoted(local));
  }

  ConditionPointer parseDisjunction() {
    std::vector<ConditionPointer> parts;
    do {
      std::vector<ConditionPointer> joined;
      do {
        joined.push_back(parseNegation());
      } while (takeWord("AND"));
      parts.push_back(makeConjunction(std::move(joined)));
    } while (takeWord("OR"));
    return makeDisjunction(std::move(parts));
  }

  ConditionPointer parseNegation() {
    if (++m_depth > DEEPEST_NESTING) {
      failQuery("the conditions are nested more than " + std::to_string(DEEPEST_NESTING) + " deep");
    }
    ConditionPointer condition;
    if (takeWord("NOT")) {
      condition = makeNegation(parseNegation());
    } else if (takeSymbol("(")) {
      condition = parseDisjunction();
      if (!takeSymbol(")")) {
        fail("AND, OR or )");
      }
    } else {
      condition = parseTest();
    }
    --m_depth;
    return condition;
  }

  ConditionPointer parseTest() {
    if (isThisObject(m_token)) {
      advance();
      expectWord("ISA");
      return makeClassTest("", takeClass(), m_schema);
    }
    const QueryToken first = m_token;
    QueryOperand left = parseOperand();
    if (!left.property.empty() && takeWord("IS")) {
      const bool negated = takeWord("NOT");
      expectWord("NULL");
      ConditionPointer test = makeNullTest(left.property);
      return negated ? makeNegation(std::move(test)) : std::move(test);
    }
    if (!left.property.empty() && takeWord("ISA")) {
      return makeClassTest(left.property, takeClass(), m_schema);
    }
    const std::string symbol = m_token.text;
    for (const char* known : {"=", "<>", "!=", "<", "<=", ">", ">="}) {
      if (takeSymbol(known)) {
        const QueryToken second = m_token;
        return compared(std::move(left), first, symbol, parseOperand(), second);
      }
    }
    fail("a comparison such as = or <>, IS NULL or ISA");
  }

  /** Whether a word stands for the instance itself. */
  bool isThisObject(const QueryToken& token) const {
    return token.isWord("__this") || token.isWord(m_className.c_str());
  }

  std::string takeClass() {
    if (m_token.kind == QueryToken::Kind::Literal && m_token.literal.type() == CMPI_string) {
      std::string name = m_token.literal.asString();
      advance();
      return name;
    }
    return takeName("the name of a class");
  }

  QueryOperand parseOperand() {
    QueryOperand operand;
    if (m_token.isWord("TRUE") || m_token.isWord("FALSE")) {
      operand.literal = Value::boolean(m_token.isWord("TRUE"));
      operand.kind = Comparable::Boolean;
    } else if (m_token.isWord("NULL")) {
      failQuery("nothing is equal to NULL; write IS NULL or IS NOT NULL");
    } else if (m_token.kind == QueryToken::Kind::Name) {
      const SchemaProperty& property = propertyNamed(m_token.text);
      operand.property = property.name;
      operand.kind = comparableAs(property.type);
    } else if (m_token.kind == QueryToken::Kind::Literal) {
      operand.literal = m_token.literal;
      operand.kind = comparableAs(m_token.literal.type());
    } else {
      fail("a property, a number, a text in quotes, TRUE or FALSE");
    }
    advance();
    return operand;
  }

  static ConditionPointer compared(
      QueryOperand left, const QueryToken& first, const std::string& symbol, QueryOperand right,
      const QueryToken& second) {
    readTime(left, right.kind);
    readTime(right, left.kind);
    if (left.kind != right.kind || left.kind == Comparable::Not) {
      failQuery(text::quoted(first.text) + " cannot be compared with " + text::quoted(second.text));
    }
    if (left.kind == Comparable::Boolean && symbol != "=" && symbol != "<>" && symbol != "!=") {
      failQuery(text::quoted(first.text) + " is TRUE or FALSE, and neither is less than the other");
    }
    return makeComparison(std::move(left), symbol, std::move(right));
  }

  /** A text that is compared with a time is one. */
  static void readTime(QueryOperand& operand, Comparable other) {
    if (other == Comparable::Time && operand.property.empty() && operand.kind == Comparable::Text) {
      const std::optional<DateTime> time = DateTime::parse(operand.literal.asString());
      if (!time) {
        failQuery(text::quoted(operand.literal.asString()) + " is not a valid date and time of CIM");
      }
      operand.literal = Value::dateTime(*time);
      operand.kind = Comparable::Time;
    }
  }

  std::string takeName(const char* what) {
    if (m_token.kind != QueryToken::Kind::Name) {
      fail(what);
    }
    std::string name = m_token.text;
    advance();
    return name;
  }

  bool takeWord(const char* word) { return m_token.isWord(word) && advance(); }
  bool takeSymbol(const char* symbol) { return m_token.isSymbol(symbol) && advance(); }

  void expectWord(const char* word) {
    if (!takeWord(word)) {
      fail(word);
    }
  }

  bool advance() {
    m_token = m_lexer.next();
    return true;
  }

  [[noreturn]] void fail(const char* expected) const {
    failQuery(
        "expected " + std::string(expected) + ", found " +
        (m_token.kind == QueryToken::Kind::End ? "the end of the query" : text::quoted(m_token.text)));
  }

  QueryLexer m_lexer;
  const Schema& m_schema;
  QueryToken m_token;
  std::string m_className;
  unsigned int m_depth = 0;
};

}  // namespace

Query::Query(const std::string& text, const std::string& language, const Schema& schema) : m_schema(&schema) {
  if (!equalNames(language, "WQL") && !equalNames(language, "DMTF:CQL") && !equalNames(language, "CIM:CQL")) {
    throw CimFailure(
        CMPI_RC_ERR_QUERY_LANGUAGE_NOT_SUPPORTED,
        text::quoted(language) + " is not a supported query language; these are WQL, DMTF:CQL and CIM:CQL");
  }
  if (text.size() > LONGEST_QUERY) {
    failQuery("the query is longer than " + std::to_string(LONGEST_QUERY) + " bytes");
  }
  ParsedQuery query = QueryParser(text, schema).parse();
  m_className = std::move(query.className);
  m_properties = std::move(query.properties);
  m_condition = std::move(query.condition);
}

Query::Query(Query&&) noexcept = default;
Query& Query::operator=(Query&&) noexcept = default;
Query::~Query() = default;

const std::string& Query::className() const {
  return m_className;
}

bool Query::selects(const Instance& instance) const {
  return isKindOf(*m_schema, instance.path.className, m_className) &&
         (m_condition == nullptr || m_condition->evaluate(instance) == true);
}

Instance Query::project(Instance instance) const {
  if (m_properties) {
    std::vector<NamedValue> selected;
    for (NamedValue& property : instance.properties) {
      const bool wanted =
          std::any_of(m_properties->begin(), m_properties->end(), [&property](const std::string& name) {
            return equalNames(name, property.name);
          });
      if (wanted) {
        selected.push_back(std::move(property));
      }
    }
    instance.properties = std::move(selected);
  }
  return instance;
}

}  // namespace tvp::host::cimxml
