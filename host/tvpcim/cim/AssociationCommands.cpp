// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/Commands.h"
#include "host/tvpcim/Failure.h"

#include <memory>

namespace tvp::host::tvpcim {
namespace {

struct AssociationOptions {
  std::string path;
  AssociationFilter filter;
};

using Action = void (*)(Tool& tool, const ObjectPath& path, const AssociationFilter& filter);

void printInstances(Tool& tool, const char* noun, const InstancesOutcome& outcome) {
  tool.session().check(outcome);
  tool.print(tool.formatter().listing({noun, outcome.instances, columnsOf(outcome.instances)}));
}

void printPaths(Tool& tool, const char* noun, const PathsOutcome& outcome) {
  tool.session().check(outcome);
  tool.print(tool.formatter().paths(noun, outcome.paths));
}

void listAssociators(Tool& tool, const ObjectPath& path, const AssociationFilter& filter) {
  printInstances(tool, "associated objects", tool.session().operations().associators(path, filter));
}

void listReferences(Tool& tool, const ObjectPath& path, const AssociationFilter& filter) {
  printInstances(tool, "associations", tool.session().operations().references(path, filter));
}

void listReferenceNames(Tool& tool, const ObjectPath& path, const AssociationFilter& filter) {
  printPaths(tool, "associations", tool.session().operations().referenceNames(path, filter));
}

void listAssociatorNames(Tool& tool, const ObjectPath& path, const AssociationFilter& filter) {
  const PathsOutcome outcome = tool.session().operations().associatorNames(path, filter);
  if (!outcome.ok() && filter.associationClass.empty()) {
    throw OperationError(
        describe(outcome), "the provider may need an association class; name it with --assoc-class");
  }
  printPaths(tool, "associated objects", outcome);
}

void add(CLI::App& app, Tool& tool, const char* name, const char* summary, Action action, bool farEnd) {
  auto options = std::make_shared<AssociationOptions>();
  CLI::App& verb = addVerb(app, tool, name, summary, PATH_HELP, [&tool, options, action] {
    action(tool, tool.session().parsePath(options->path), options->filter);
  });
  verb.add_option("PATH", options->path, "The object whose associations are asked for")->required();
  const auto restrict = [&verb](const char* option, std::string& value, const char* text) {
    verb.add_option(option, value, text)->type_name("NAME");
  };
  if (farEnd) {
    restrict("--assoc-class", options->filter.associationClass, "Through this association only");
  }
  restrict("--result-class", options->filter.resultClass, "Results of this class only");
  restrict("--role", options->filter.role, "The role of the object");
  if (farEnd) {
    restrict("--result-role", options->filter.resultRole, "The role of the results");
  }
}

}  // namespace

void addAssociationCommands(CLI::App& app, Tool& tool) {
  add(app, tool, "an", "List the paths of associated objects", listAssociatorNames, true);
  add(app, tool, "ai", "List associated objects", listAssociators, true);
  add(app, tool, "rn", "List the paths of associations that refer to an object", listReferenceNames, false);
  add(app, tool, "ri", "List associations that refer to an object", listReferences, false);
}

}  // namespace tvp::host::tvpcim
