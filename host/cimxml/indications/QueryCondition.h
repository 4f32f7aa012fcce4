// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_INDICATIONS_QUERYCONDITION_H
#define HOST_CIMXML_INDICATIONS_QUERYCONDITION_H

#include "host/cimxml/indications/Query.h"

#include <optional>
#include <string>
#include <vector>

namespace tvp::host::cimxml {

/** A condition of a query. Never changes. */
class Query::Condition {
public:
  virtual ~Condition() = default;
  /** Nothing where it is neither true nor false: NULL is involved. */
  virtual std::optional<bool> evaluate(const Instance& instance) const = 0;
};

using ConditionPointer = std::unique_ptr<const Query::Condition>;

/** The class that all indications derive from, also where the schema does not have it. */
constexpr char ROOT_OF_INDICATIONS[] = "CIM_Indication";
/** Whether a class is the other one or derives from it. */
bool isKindOf(const Schema& schema, const std::string& className, const std::string& ancestor);

/** What values are compared as. */
enum class Comparable { Number, Text, Boolean, Time, Not };
Comparable comparableAs(CMPIType type);

/** A literal, or the property that has the name. */
struct QueryOperand {
  std::string property;  ///< empty for a literal
  Value literal;
  Comparable kind = Comparable::Not;

  /** Null for NULL, and for a property that the instance does not have. */
  const Value* in(const Instance& instance) const;
};

/** A comparison of operands of one kind. @param symbol "=", "<>", "!=", "<", "<=", ">" or ">=" */
ConditionPointer makeComparison(QueryOperand left, const std::string& symbol, QueryOperand right);
/** Whether a property is NULL. */
ConditionPointer makeNullTest(std::string property);
/** Whether the instance, or the one that the property embeds, is of a class. @param property may be empty */
ConditionPointer makeClassTest(std::string property, std::string className, const Schema& schema);
ConditionPointer makeNegation(ConditionPointer condition);
/** All of the conditions, or any of them. */
ConditionPointer makeConjunction(std::vector<ConditionPointer> conditions);
ConditionPointer makeDisjunction(std::vector<ConditionPointer> conditions);

}  // namespace tvp::host::cimxml

#endif
