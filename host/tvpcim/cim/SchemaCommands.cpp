// SPDX-License-Identifier: Apache-2.0
#include "host/schema/MofWriter.h"
#include "host/schema/Names.h"
#include "host/tvpcim/Commands.h"
#include "host/tvpcim/output/Text.h"

#include <memory>

namespace tvp::host::tvpcim {
namespace {

Value textArray(const std::vector<std::string>& texts) {
  Value::List values;
  for (const std::string& text : texts) {
    values.push_back(Value::string(text));
  }
  return Value::array(CMPI_string, std::move(values));
}

Instance classSummary(const SchemaClass& schemaClass) {
  std::vector<std::string> keys;
  for (const SchemaProperty& property : schemaClass.properties) {
    if (property.key) {
      keys.push_back(property.name);
    }
  }
  const Value* description = findValue(schemaClass.qualifiers, "Description");
  Instance summary;
  summary.path.className = "Class";
  summary.properties = {
      {"Name", Value::string(schemaClass.name)},
      {"Superclass",
       schemaClass.superclass.empty() ? Value::null(CMPI_string) : Value::string(schemaClass.superclass)},
      {"Keys", textArray(keys)},
      {"PropertyCount", Value::uint64(schemaClass.properties.size())},
      {"Methods", textArray(namesOf(schemaClass.methods))},
      {"Description", description == nullptr ? Value::null(CMPI_string) : *description}};
  return summary;
}

Instance elementOf(const std::string& kind, const TypedElement& element) {
  Instance described;
  described.path.className = kind;
  described.properties = {
      {"Name", Value::string(element.name)},
      {"Type", Value::string(typeName(element.type))},
      {"Class", element.className.empty() ? Value::null(CMPI_string) : Value::string(element.className)},
      {"Description", Value::string(element.text("Description"))}};
  return described;
}

Value methodsOf(const SchemaClass& schemaClass) {
  Value::List methods;
  for (const SchemaMethod& method : schemaClass.methods) {
    Value::List parameters;
    for (const SchemaParameter& parameter : method.parameters) {
      Instance described = elementOf("Parameter", parameter);
      described.properties.push_back({"In", Value::boolean(parameter.in)});
      described.properties.push_back({"Out", Value::boolean(parameter.out)});
      parameters.push_back(Value::instance(std::move(described)));
    }
    Instance described = elementOf("Method", method);
    described.properties.push_back({"Parameters", Value::array(CMPI_instance, std::move(parameters))});
    methods.push_back(Value::instance(std::move(described)));
  }
  return Value::array(CMPI_instance, std::move(methods));
}

/** The whole class, for JSON: its summary with properties and methods in place of their counts. */
Instance classDetails(const SchemaClass& schemaClass) {
  Value::List properties;
  for (const SchemaProperty& property : schemaClass.properties) {
    Instance described = elementOf("Property", property);
    described.properties.push_back({"Key", Value::boolean(property.key)});
    described.properties.push_back({"Writable", Value::boolean(property.writable)});
    properties.push_back(Value::instance(std::move(described)));
  }
  Instance details = classSummary(schemaClass);
  details.properties.push_back({"Properties", Value::array(CMPI_instance, std::move(properties))});
  setValue(details.properties, "Methods", methodsOf(schemaClass));
  return details;
}

void listClasses(Tool& tool) {
  const std::vector<const SchemaClass*> classes = tool.session().schema().classes();
  Listing summaries{
      "classes",
      {},
      {plainColumn("CLASS", "Name"), plainColumn("SUPERCLASS", "Superclass"),
       plainColumn("PROPERTIES", "PropertyCount", true), plainColumn("KEYS", "Keys"),
       onlyWide(plainColumn("METHODS", "Methods")), onlyWide(plainColumn("DESCRIPTION", "Description"))}};
  for (const SchemaClass* schemaClass : classes) {
    summaries.instances.push_back(classSummary(*schemaClass));
  }
  tool.print(tool.formatter().declarations(classes, summaries));
}

void showClass(Tool& tool, const std::string& className) {
  const SchemaClass& schemaClass = tool.session().classNamed(className);
  tool.print(tool.formatter().declaration(schemaClass, classDetails(schemaClass)));
}

}  // namespace

void addSchemaCommands(CLI::App& app, Tool& tool) {
  addVerb(app, tool, "classes", "List the classes", "", [&tool] { listClasses(tool); });
  auto className = std::make_shared<std::string>();
  addVerb(
      app, tool, "mof", "Show the declaration of a class, in MOF or with -o json", "",
      [&tool, className] { showClass(tool, *className); })
      .add_option("CLASS", *className, "The class")
      ->required();
}

}  // namespace tvp::host::tvpcim
