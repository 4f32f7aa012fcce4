// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/cim/MethodCommand.h"

#include "host/schema/Names.h"
#include "host/tvpcim/Failure.h"
#include "host/tvpcim/cim/ArgumentText.h"
#include "host/tvpcim/output/Text.h"

namespace tvp::host::tvpcim {
namespace {

const SchemaMethod& methodNamed(const SchemaClass& schemaClass, const std::string& name) {
  const SchemaMethod* method = schemaClass.method(name);
  if (method != nullptr) {
    return *method;
  }
  std::vector<std::string> names;
  for (const SchemaMethod& candidate : schemaClass.methods) {
    names.push_back(candidate.name);
  }
  std::string near = suggestion(name, names);
  if (near.empty()) {
    near = names.empty() ? "; it has none" : "; it has: " + join(names, ", ");
  }
  throw UsageError(
      statusName(CMPI_RC_ERR_METHOD_NOT_FOUND) + ": the class " + schemaClass.name + " has no method '" +
      printable(name) + "'" + near);
}

std::string missingArguments(const SchemaMethod& method, const Arguments& given) {
  std::vector<std::string> missing;
  for (const SchemaParameter& parameter : method.parameters) {
    if (parameter.in && given.find(parameter.name) == nullptr) {
      missing.push_back(parameter.name);
    }
  }
  return missing.empty() ? "" : method.name + " also takes " + join(missing, ", ");
}

}  // namespace

void MethodCommand::addTo(CLI::App& app) {
  CLI::App& im = addVerb(
      app, "im", "Invoke a method",
      std::string("A path is written CLASS.Key=\"text\",Number=3.\n") + ARGUMENT_HELP,
      [this] { invokeMethod(); });
  im.add_option("CLASS_OR_PATH", m_object, "The class, or the path of an instance")->required();
  im.add_option("METHOD", m_method, "The method")->required();
  im.add_option("NAME=VALUE", m_arguments, "Input arguments and their values");
}

void MethodCommand::invokeMethod() {
  const ObjectPath path = session().parsePath(m_object);
  const SchemaMethod& method = methodNamed(session().classNamed(path.className), m_method);
  const Arguments arguments = parseArguments(method, m_arguments);
  const MethodOutcome outcome = session().provider().invokeMethod(path, method.name, arguments);
  if (!outcome.ok()) {
    const std::string missing = missingArguments(method, arguments);
    throw OperationError(describe(outcome), missing.empty() ? remarksOf(outcome) : missing);
  }
  tool().print(formatter().record(answerOf(method.name, outcome)));
}

}  // namespace tvp::host::tvpcim
