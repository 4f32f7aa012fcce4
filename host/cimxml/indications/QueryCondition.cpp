// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/indications/QueryCondition.h"

#include "host/schema/Names.h"

#include <utility>

namespace tvp::host::cimxml {
namespace {

/** Wide enough for every integer of 64 bits, signed or not, besides the reals. */
using Number = long double;

Number numberOf(const Value& value) {
  switch (value.type()) {
  case CMPI_real32:
  case CMPI_real64:
    return value.asReal();
  case CMPI_sint8:
  case CMPI_sint16:
  case CMPI_sint32:
  case CMPI_sint64:
    return static_cast<Number>(value.asSigned());
  default:
    return static_cast<Number>(value.asUnsigned());
  }
}

template <class Content>
int order(const Content& left, const Content& right) {
  return left < right ? -1 : (right < left ? 1 : 0);
}

int order(const Value& left, const Value& right, Comparable kind) {
  switch (kind) {
  case Comparable::Number:
    return order(numberOf(left), numberOf(right));
  case Comparable::Boolean:
    return order(left.asBoolean(), right.asBoolean());
  case Comparable::Time:
    return order(left.asDateTime().microseconds(), right.asDateTime().microseconds());
  default:
    return order(left.asString(), right.asString());
  }
}

bool holds(const std::string& symbol, int order) {
  if (symbol == "=") {
    return order == 0;
  }
  if (symbol == "<>" || symbol == "!=") {
    return order != 0;
  }
  const bool strictly = symbol.front() == '<' ? order < 0 : order > 0;
  return strictly || (symbol.size() == 2 && order == 0);
}

class Comparison : public Query::Condition {
public:
  Comparison(QueryOperand left, std::string symbol, QueryOperand right)
      : m_left(std::move(left)), m_symbol(std::move(symbol)), m_right(std::move(right)) {}

  std::optional<bool> evaluate(const Instance& instance) const override {
    const Value* left = m_left.in(instance);
    const Value* right = m_right.in(instance);
    // An instance may have another type than its class declares.
    if (left == nullptr || right == nullptr || comparableAs(left->type()) != m_left.kind ||
        comparableAs(right->type()) != m_left.kind) {
      return std::nullopt;
    }
    return holds(m_symbol, order(*left, *right, m_left.kind));
  }

private:
  const QueryOperand m_left;
  const std::string m_symbol;
  const QueryOperand m_right;
};

class NullTest : public Query::Condition {
public:
  explicit NullTest(std::string property) : m_property(std::move(property)) {}

  std::optional<bool> evaluate(const Instance& instance) const override {
    const Value* value = instance.property(m_property);
    return value == nullptr || value->isNull();
  }

private:
  const std::string m_property;
};

class ClassTest : public Query::Condition {
public:
  ClassTest(std::string property, std::string className, const Schema& schema)
      : m_property(std::move(property)), m_className(std::move(className)), m_schema(schema) {}

  std::optional<bool> evaluate(const Instance& instance) const override {
    if (m_property.empty()) {
      return isKindOf(m_schema, instance.path.className, m_className);
    }
    const Value* value = instance.property(m_property);
    if (value == nullptr || value->isNull() || value->type() != CMPI_instance) {
      return std::nullopt;
    }
    return isKindOf(m_schema, value->asInstance().path.className, m_className);
  }

private:
  const std::string m_property;
  const std::string m_className;
  const Schema& m_schema;
};

class Negation : public Query::Condition {
public:
  explicit Negation(ConditionPointer condition) : m_condition(std::move(condition)) {}

  std::optional<bool> evaluate(const Instance& instance) const override {
    const std::optional<bool> result = m_condition->evaluate(instance);
    return result ? std::optional(!*result) : std::nullopt;
  }

private:
  const ConditionPointer m_condition;
};

/** Conditions joined: one that is `decisive` decides, else one that is unknown makes the whole unknown. */
class Junction : public Query::Condition {
public:
  Junction(std::vector<ConditionPointer> conditions, bool decisive)
      : m_conditions(std::move(conditions)), m_decisive(decisive) {}

  std::optional<bool> evaluate(const Instance& instance) const override {
    std::optional<bool> result = !m_decisive;
    for (const ConditionPointer& condition : m_conditions) {
      const std::optional<bool> part = condition->evaluate(instance);
      if (part == m_decisive) {
        return m_decisive;
      }
      if (!part) {
        result = std::nullopt;
      }
    }
    return result;
  }

private:
  const std::vector<ConditionPointer> m_conditions;
  const bool m_decisive;
};

ConditionPointer join(std::vector<ConditionPointer> conditions, bool decisive) {
  if (conditions.size() == 1) {
    return std::move(conditions.front());
  }
  return std::make_unique<const Junction>(std::move(conditions), decisive);
}

}  // namespace

bool isKindOf(const Schema& schema, const std::string& className, const std::string& ancestor) {
  if (schema.isA(className, ancestor)) {
    return true;
  }
  const SchemaClass* known = schema.find(className);
  return known != nullptr && known->isIndication() && equalNames(ancestor, ROOT_OF_INDICATIONS);
}

Comparable comparableAs(CMPIType type) {
  switch (type) {
  case CMPI_boolean:
    return Comparable::Boolean;
  case CMPI_string:
    return Comparable::Text;
  case CMPI_dateTime:
    return Comparable::Time;
  case CMPI_uint8:
  case CMPI_uint16:
  case CMPI_uint32:
  case CMPI_uint64:
  case CMPI_sint8:
  case CMPI_sint16:
  case CMPI_sint32:
  case CMPI_sint64:
  case CMPI_real32:
  case CMPI_real64:
    return Comparable::Number;
  default:
    return Comparable::Not;
  }
}

const Value* QueryOperand::in(const Instance& instance) const {
  const Value* value = property.empty() ? &literal : instance.property(property);
  return value == nullptr || value->isNull() ? nullptr : value;
}

ConditionPointer makeComparison(QueryOperand left, const std::string& symbol, QueryOperand right) {
  return std::make_unique<const Comparison>(std::move(left), symbol, std::move(right));
}

ConditionPointer makeNullTest(std::string property) {
  return std::make_unique<const NullTest>(std::move(property));
}

ConditionPointer makeClassTest(std::string property, std::string className, const Schema& schema) {
  return std::make_unique<const ClassTest>(std::move(property), std::move(className), schema);
}

ConditionPointer makeNegation(ConditionPointer condition) {
  return std::make_unique<const Negation>(std::move(condition));
}

ConditionPointer makeConjunction(std::vector<ConditionPointer> conditions) {
  return join(std::move(conditions), false);
}

ConditionPointer makeDisjunction(std::vector<ConditionPointer> conditions) {
  return join(std::move(conditions), true);
}

}  // namespace tvp::host::cimxml
