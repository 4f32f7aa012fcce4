// SPDX-License-Identifier: Apache-2.0
#include "host/schema/Names.h"
#include "host/tvpcim/Commands.h"
#include "host/tvpcim/Failure.h"
#include "host/tvpcim/cim/ArgumentText.h"
#include "host/tvpcim/output/Text.h"

#include <memory>

namespace tvp::host::tvpcim {
namespace {

struct MethodOptions {
  std::string object;  ///< a class or a path
  std::string method;
  std::vector<std::string> arguments;
};

const SchemaMethod& methodNamed(const SchemaClass& schemaClass, const std::string& name) {
  const SchemaMethod* method = schemaClass.method(name);
  // An object manager passes the name on as it is written, and the provider compares it exactly.
  if (method != nullptr && method->name == name) {
    return *method;
  }
  const std::vector<std::string> names = namesOf(schemaClass.methods);
  std::string near = suggestion(name, names);
  if (near.empty()) {
    near = names.empty() ? "; it has none" : "; it has: " + join(names, ", ");
  }
  throw UsageError(
      statusName(CMPI_RC_ERR_METHOD_NOT_FOUND) + ": the class " + schemaClass.name + " has no method " +
      text::quoted(name) + near);
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

void invokeMethod(Tool& tool, const MethodOptions& options) {
  Session& session = tool.session();
  const ObjectPath path = session.parsePath(options.object);
  const SchemaMethod& method = methodNamed(session.classNamed(path.className), options.method);
  const Arguments arguments = parseArguments(method, options.arguments);
  const MethodOutcome outcome = session.operations().invokeMethod(path, method.name, arguments);
  if (!outcome.ok()) {
    const std::string missing = missingArguments(method, arguments);
    throw OperationError(describe(outcome), missing.empty() ? hintOf(outcome) : missing);
  }
  tool.print(tool.formatter().record(answerOf(method.name, outcome)));
  if (tool.options.dryRun) {
    tool.notice("this was a dry run; nothing was changed");
  }
}

}  // namespace

void addMethodCommand(CLI::App& app, Tool& tool) {
  auto options = std::make_shared<MethodOptions>();
  CLI::App& im = addVerb(
      app, tool, "im", "Invoke a method", std::string(PATH_HELP) + "\n" + ARGUMENT_HELP,
      [&tool, options] { invokeMethod(tool, *options); });
  im.add_option("CLASS_OR_PATH", options->object, "The class, or the path of an instance")->required();
  im.add_option("METHOD", options->method, "The method")->required();
  im.add_option("NAME=VALUE", options->arguments, "Input arguments and their values");
}

}  // namespace tvp::host::tvpcim
