// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_INDICATIONS_QUERY_H
#define HOST_CIMXML_INDICATIONS_QUERY_H

#include "host/schema/Schema.h"
#include "host/schema/Value.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tvp::host::cimxml {

/**
 * A query: SELECT * (or properties) FROM a class WHERE conditions. The conditions compare a property with a
 * literal or with another property (=, <>, !=, <, <=, >, >=), test it with IS NULL, IS NOT NULL or ISA, and
 * are joined with AND, OR, NOT and parentheses: the part that WQL and CQL have in common. As there, a
 * comparison with NULL is neither true nor false, and what is not true is not selected.
 *
 * Never changes. Safe for several threads.
 */
class Query {
public:
  /**
   * @param language "WQL", "DMTF:CQL" or "CIM:CQL", in any case
   * @param schema the classes; it has to outlive the query
   * @throws CimFailure with CMPI_RC_ERR_QUERY_LANGUAGE_NOT_SUPPORTED; CMPI_RC_ERR_INVALID_QUERY, with what
   * was expected and where, also for a property that no selected class has, and for a comparison of a number
   * with a text and the like; CMPI_RC_ERR_INVALID_CLASS
   */
  Query(const std::string& text, const std::string& language, const Schema& schema);
  Query(Query&&) noexcept;
  Query& operator=(Query&&) noexcept;
  ~Query();

  /** The class after FROM, as the schema spells it. */
  const std::string& className() const;
  /** Whether an instance is of the class, or of one below it, and fulfils the conditions. */
  bool selects(const Instance& instance) const;
  /** The instance with the selected properties only; with its path. */
  Instance project(Instance instance) const;

  class Condition;

private:
  const Schema* m_schema;
  std::string m_className;
  std::optional<std::vector<std::string>> m_properties;  ///< without a value, all
  std::unique_ptr<const Condition> m_condition;          ///< null: none
};

}  // namespace tvp::host::cimxml

#endif
