// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/cim/AssociationCommands.h"

#include "host/tvpcim/Failure.h"

namespace tvp::host::tvpcim {

void AssociationCommands::addTo(CLI::App& app) {
  const auto define = [&](const char* name, const char* summary, void (AssociationCommands::*action)(),
                          bool farEnd) {
    CLI::App& verb =
        addVerb(app, name, summary, "A path is written CLASS.Key=\"text\",Number=3.", [this, action] {
          (this->*action)();
        });
    verb.add_option("PATH", m_path, "The object whose associations are asked for")->required();
    if (farEnd) {
      verb.add_option("--assoc-class", m_filter.associationClass, "Through this association only")
          ->type_name("NAME");
    }
    verb.add_option("--result-class", m_filter.resultClass, "Results of this class only")->type_name("NAME");
    verb.add_option("--role", m_filter.role, "The role of the object")->type_name("NAME");
    if (farEnd) {
      verb.add_option("--result-role", m_filter.resultRole, "The role of the results")->type_name("NAME");
    }
  };
  define("an", "List the paths of associated objects", &AssociationCommands::associatorNames, true);
  define("ai", "List associated objects", &AssociationCommands::associators, true);
  define(
      "rn", "List the paths of associations that refer to an object", &AssociationCommands::referenceNames,
      false);
  define("ri", "List associations that refer to an object", &AssociationCommands::references, false);
}

void AssociationCommands::associatorNames() {
  const PathsOutcome outcome = session().provider().associatorNames(session().parsePath(m_path), m_filter);
  if (!outcome.ok() && m_filter.associationClass.empty()) {
    throw OperationError(
        describe(outcome), "the provider may want an association; name it with --assoc-class");
  }
  session().check(outcome);
  tool().print(formatter().paths("associated objects", outcome.paths));
}

void AssociationCommands::referenceNames() {
  const PathsOutcome outcome = session().provider().referenceNames(session().parsePath(m_path), m_filter);
  session().check(outcome);
  tool().print(formatter().paths("associations", outcome.paths));
}

void AssociationCommands::associators() {
  const InstancesOutcome outcome = session().provider().associators(session().parsePath(m_path), m_filter);
  session().check(outcome);
  tool().print(formatter().listing({"associated objects", outcome.instances, columnsOf(outcome.instances)}));
}

void AssociationCommands::references() {
  const InstancesOutcome outcome = session().provider().references(session().parsePath(m_path), m_filter);
  session().check(outcome);
  tool().print(formatter().listing({"associations", outcome.instances, columnsOf(outcome.instances)}));
}

}  // namespace tvp::host::tvpcim
