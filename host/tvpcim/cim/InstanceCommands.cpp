// SPDX-License-Identifier: Apache-2.0
#include "host/schema/Names.h"
#include "host/schema/ObjectPathText.h"
#include "host/tvpcim/Commands.h"
#include "host/tvpcim/Failure.h"
#include "host/tvpcim/cim/ArgumentText.h"
#include "host/tvpcim/output/Text.h"

#include <memory>

namespace tvp::host::tvpcim {
namespace {

struct InstanceOptions {
  std::string object;  ///< a class or a path
  std::vector<std::string> values;
  std::vector<std::string> properties;
};

/** The property names that were asked for, as the class spells them; without a value when none were. */
PropertyList checkedProperties(const SchemaClass& schemaClass, const std::vector<std::string>& names) {
  if (names.empty()) {
    return std::nullopt;
  }
  if (schemaClass.external) {
    return names;
  }
  std::vector<std::string> checked;
  checked.reserve(names.size());
  for (const std::string& name : names) {
    checked.push_back(propertyNamed(schemaClass, name).name);
  }
  return checked;
}

/** A notice when a class is empty because the storage driver is not there. */
void explainEmptiness(Tool& tool, const std::string& className) {
  for (const char* name :
       {Drive::KIND.className, Pool::KIND.className, Volume::KIND.className, Inventory::IDENTITY_CLASS}) {
    if (equalNames(className, name) && tool.inventory().identity() == nullptr) {
      tool.notice(std::string(NO_DRIVER) + "; " + SEE_STATUS);
    }
  }
}

void enumerateInstances(Tool& tool, const InstanceOptions& options) {
  Session& session = tool.session();
  const ObjectPath path = session.pathOf(options.object);
  const PropertyList wanted = checkedProperties(session.classNamed(options.object), options.properties);
  const InstancesOutcome outcome = session.operations().enumerateInstances(path, wanted);
  session.check(outcome);
  tool.print(tool.formatter().listing({"instances", outcome.instances, columnsOf(outcome.instances)}));
  if (outcome.instances.empty()) {
    explainEmptiness(tool, path.className);
  }
}

void enumerateNames(Tool& tool, const InstanceOptions& options) {
  Session& session = tool.session();
  const PathsOutcome outcome = session.operations().enumerateInstanceNames(session.pathOf(options.object));
  session.check(outcome);
  tool.print(tool.formatter().paths("instance names", outcome.paths));
}

void getInstance(Tool& tool, const InstanceOptions& options) {
  Session& session = tool.session();
  const ObjectPath path = session.parsePath(options.object);
  const PropertyList wanted = checkedProperties(session.classNamed(path.className), options.properties);
  const InstancesOutcome outcome = session.operations().getInstance(path, wanted);
  session.check(outcome);
  if (outcome.instances.empty()) {
    tool.print(tool.formatter().nothing());
    tool.notice("the provider returned no instance for " + printable(toPathText(path)));
    return;
  }
  tool.print(tool.formatter().record(outcome.instances.front()));
}

/** Prints the answer of an operation that returns nothing of its own. */
void printDone(Tool& tool, const std::string& operation, const ObjectPath& path) {
  Instance answer;
  answer.path.className = operation;
  answer.properties = {
      {"Operation", Value::string(operation)},
      {"Path", Value::string(toPathText(path))},
      {"Status", Value::string("CIM_ERR_SUCCESS")}};
  tool.print(tool.formatter().record(answer));
}

void modifyInstance(Tool& tool, const InstanceOptions& options) {
  Session& session = tool.session();
  Instance instance;
  instance.path = session.parsePath(options.object);
  instance.properties = parseProperties(session.classNamed(instance.path.className), options.values);
  session.check(session.operations().modifyInstance(instance.path, instance));
  printDone(tool, "ModifyInstance", instance.path);
}

void createInstance(Tool& tool, const InstanceOptions& options) {
  Session& session = tool.session();
  Instance instance;
  instance.path = session.pathOf(options.object);
  const SchemaClass& schemaClass = session.classNamed(options.object);
  instance.properties = parseProperties(schemaClass, options.values);
  for (const NamedValue& property : instance.properties) {
    if (schemaClass.property(property.name)->key) {
      instance.path.keys.push_back(property);
    }
  }
  const PathsOutcome outcome = session.operations().createInstance(instance.path, instance);
  session.check(outcome);
  printDone(tool, "CreateInstance", outcome.paths.empty() ? instance.path : outcome.paths.front());
}

void deleteInstance(Tool& tool, const InstanceOptions& options) {
  const ObjectPath path = tool.session().parsePath(options.object);
  tool.session().check(tool.session().operations().deleteInstance(path));
  printDone(tool, "DeleteInstance", path);
}

/** What a verb takes beside its class or path. */
enum class Takes { Nothing, Properties, Values };

void add(
    CLI::App& app, Tool& tool, const char* name, const char* summary, bool ofPath, Takes takes,
    void (*action)(Tool& tool, const InstanceOptions& options)) {
  auto options = std::make_shared<InstanceOptions>();
  std::string help = ofPath ? PATH_HELP : "";
  if (takes == Takes::Values) {
    help += (ofPath ? "\n" : "") + std::string(ARGUMENT_HELP);
  }
  CLI::App& verb =
      addVerb(app, tool, name, summary, help, [&tool, options, action] { action(tool, *options); });
  verb.add_option(
          ofPath ? "PATH" : "CLASS", options->object, ofPath ? "The path of the instance" : "The class")
      ->required();
  if (takes == Takes::Values) {
    verb.add_option("NAME=VALUE", options->values, "Properties and their values")->required();
  } else if (takes == Takes::Properties) {
    verb.add_option("--property", options->properties, "Ask for this property only; may be given again")
        ->type_name("NAME")
        ->allow_extra_args(false);
  }
}

}  // namespace

void addInstanceCommands(CLI::App& app, Tool& tool) {
  const bool ofClass = false;
  const bool ofPath = true;
  add(app, tool, "ei", "Enumerate the instances of a class", ofClass, Takes::Properties, enumerateInstances);
  add(app, tool, "ein", "Enumerate the paths of the instances of a class", ofClass, Takes::Nothing,
      enumerateNames);
  add(app, tool, "gi", "Get an instance", ofPath, Takes::Properties, getInstance);
  add(app, tool, "mi", "Modify an instance", ofPath, Takes::Values, modifyInstance);
  add(app, tool, "ci", "Create an instance", ofClass, Takes::Values, createInstance);
  add(app, tool, "di", "Delete an instance", ofPath, Takes::Nothing, deleteInstance);
}

}  // namespace tvp::host::tvpcim
