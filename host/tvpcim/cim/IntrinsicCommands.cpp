// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/cim/IntrinsicCommands.h"

#include "host/schema/Names.h"
#include "host/schema/ObjectPathText.h"
#include "host/tvpcim/Failure.h"
#include "host/tvpcim/cim/ArgumentText.h"
#include "host/tvpcim/output/Text.h"
#include "host/tvpcim/storage/Inventory.h"

namespace tvp::host::tvpcim {
namespace {

const char* const PATH_HELP = "A path is written CLASS.Key=\"text\",Number=3,Flag=TRUE.";

/** The property names that were asked for, as the class spells them; without a value when none were. */
PropertyList checkedProperties(const SchemaClass& schemaClass, const std::vector<std::string>& names) {
  if (names.empty()) {
    return std::nullopt;
  }
  if (schemaClass.external) {
    return names;
  }
  std::vector<std::string> known;
  for (const SchemaProperty& property : schemaClass.properties) {
    known.push_back(property.name);
  }
  std::vector<std::string> checked;
  for (const std::string& name : names) {
    const SchemaProperty* property = schemaClass.property(name);
    if (property == nullptr) {
      throw UsageError(
          statusName(CMPI_RC_ERR_NO_SUCH_PROPERTY) + ": the class " + schemaClass.name +
          " has no property '" + printable(name) + "'" + suggestion(name, known));
    }
    checked.push_back(property->name);
  }
  return checked;
}

}  // namespace

void IntrinsicCommands::addTo(CLI::App& app) {
  const auto object = [this](CLI::App& verb, const char* name, const char* summary) {
    verb.add_option(name, m_object, summary)->required();
  };
  const auto values = [this](CLI::App& verb) {
    verb.add_option("NAME=VALUE", m_values, "Properties and their values")->required();
  };
  const auto properties = [this](CLI::App& verb) {
    verb.add_option("--property", m_properties, "Ask for this property only; may be given again")
        ->type_name("NAME")
        ->allow_extra_args(false);
  };
  CLI::App& ei =
      addVerb(app, "ei", "Enumerate the instances of a class", "", [this] { enumerateInstances(); });
  object(ei, "CLASS", "The class");
  properties(ei);
  CLI::App& ein = addVerb(
      app, "ein", "Enumerate the paths of the instances of a class", "", [this] { enumerateNames(); });
  object(ein, "CLASS", "The class");
  CLI::App& gi = addVerb(app, "gi", "Get an instance", PATH_HELP, [this] { getInstance(); });
  object(gi, "PATH", "The path of the instance");
  properties(gi);
  CLI::App& mi =
      addVerb(app, "mi", "Modify an instance", std::string(PATH_HELP) + "\n" + ARGUMENT_HELP, [this] {
        modifyInstance();
      });
  object(mi, "PATH", "The path of the instance");
  values(mi);
  CLI::App& ci = addVerb(app, "ci", "Create an instance", ARGUMENT_HELP, [this] { createInstance(); });
  object(ci, "CLASS", "The class");
  values(ci);
  CLI::App& di = addVerb(app, "di", "Delete an instance", PATH_HELP, [this] { deleteInstance(); });
  object(di, "PATH", "The path of the instance");
}

void IntrinsicCommands::explainEmptiness(const std::string& className) {
  for (const char* name : {DRIVE.className, POOL.className, VOLUME.className, "TVP_TarvexProIdentity"}) {
    if (equalNames(className, name) && Inventory(session()).identity() == nullptr) {
      tool().notice(NO_DRIVER);
    }
  }
}

void IntrinsicCommands::enumerateInstances() {
  const ObjectPath path = session().pathOf(m_object);
  const PropertyList wanted = checkedProperties(session().classNamed(m_object), m_properties);
  InstancesOutcome outcome = session().provider().enumerateInstances(path, wanted);
  session().check(outcome);
  const std::vector<Column> columns = columnsOf(outcome.instances);
  const bool empty = outcome.instances.empty();
  tool().print(formatter().listing({"instances", std::move(outcome.instances), columns}));
  if (empty) {
    explainEmptiness(path.className);
  }
}

void IntrinsicCommands::enumerateNames() {
  const PathsOutcome outcome = session().provider().enumerateInstanceNames(session().pathOf(m_object));
  session().check(outcome);
  tool().print(formatter().paths("instance names", outcome.paths));
}

void IntrinsicCommands::getInstance() {
  const ObjectPath path = session().parsePath(m_object);
  const PropertyList wanted = checkedProperties(session().classNamed(path.className), m_properties);
  const InstancesOutcome outcome = session().provider().getInstance(path, wanted);
  session().check(outcome);
  if (outcome.instances.empty()) {
    tool().print(formatter().nothing());
    tool().notice("the provider answered without an instance for " + printable(toPathText(path)));
    return;
  }
  tool().print(formatter().record(outcome.instances.front()));
}

void IntrinsicCommands::printChange(const std::string& operation, const ObjectPath& path) {
  Instance answer;
  answer.path.className = operation;
  answer.properties = {
      {"Operation", Value::string(operation)},
      {"Path", Value::string(toPathText(path))},
      {"Status", Value::string("CIM_ERR_SUCCESS")}};
  tool().print(formatter().record(answer));
}

void IntrinsicCommands::modifyInstance() {
  Instance instance;
  instance.path = session().parsePath(m_object);
  instance.properties = parseProperties(session().classNamed(instance.path.className), m_values);
  session().check(session().provider().modifyInstance(instance.path, instance));
  printChange("ModifyInstance", instance.path);
}

void IntrinsicCommands::createInstance() {
  Instance instance;
  instance.path = session().pathOf(m_object);
  const SchemaClass& schemaClass = session().classNamed(m_object);
  instance.properties = parseProperties(schemaClass, m_values);
  for (const NamedValue& property : instance.properties) {
    if (schemaClass.property(property.name)->key) {
      instance.path.keys.push_back(property);
    }
  }
  const PathsOutcome outcome = session().provider().createInstance(instance.path, instance);
  session().check(outcome);
  printChange("CreateInstance", outcome.paths.empty() ? instance.path : outcome.paths.front());
}

void IntrinsicCommands::deleteInstance() {
  const ObjectPath path = session().parsePath(m_object);
  session().check(session().provider().deleteInstance(path));
  printChange("DeleteInstance", path);
}

}  // namespace tvp::host::tvpcim
