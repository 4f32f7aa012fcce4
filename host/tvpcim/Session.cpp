// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/Session.h"

#include "host/schema/MofReader.h"
#include "host/schema/Names.h"
#include "host/schema/ObjectPathText.h"
#include "host/tvpcim/Failure.h"
#include "host/tvpcim/InstalledFiles.h"
#include "host/tvpcim/output/Text.h"
#include "host/tvpcim/remote/Connection.h"
#include "text/Trim.h"

#include <cstdlib>
#include <future>
#include <stdexcept>
#include <thread>

namespace tvp::host::tvpcim {

std::chrono::milliseconds cleanUpLimit() {
  return std::getenv("TVPCIM_STRICT") == nullptr ? std::chrono::milliseconds(300) : std::chrono::minutes(1);
}

std::string describe(const Outcome& outcome) {
  std::string text = statusName(outcome.rc);
  const std::string message(text::trimmed(outcome.message));
  return text + (message.empty() ? "" : ": " + printable(message));
}

std::string remarksOf(const Outcome& outcome) {
  return printable(join(outcome.remarks, "; "));
}

std::string hintOf(const Outcome& outcome) {
  const std::string remarks = remarksOf(outcome);
  return remarks.empty() && outcome.rc == CMPI_RC_ERR_ACCESS_DENIED
             ? "this is for administrators, users whose primary group is root's"
             : remarks;
}

Instance answerOf(const std::string& method, const MethodOutcome& outcome) {
  Instance answer;
  answer.path.className = method;
  answer.properties = {{"ReturnValue", outcome.returnValue}};
  answer.properties.insert(
      answer.properties.end(), outcome.output.values.begin(), outcome.output.values.end());
  return answer;
}

const SchemaProperty& propertyNamed(const SchemaClass& schemaClass, const std::string& name) {
  const SchemaProperty* property = schemaClass.property(name);
  if (property == nullptr) {
    throw UsageError(
        statusName(CMPI_RC_ERR_NO_SUCH_PROPERTY) + ": the class " + schemaClass.name + " has no property " +
        text::quoted(name) + suggestion(name, namesOf(schemaClass.properties)));
  }
  return *property;
}

const Schema& Session::schema() {
  if (m_schema == nullptr) {
    m_schemaFile = m_options.schema.empty() ? installedSchema() : m_options.schema;
    try {
      m_schema = MofReader::readFile(m_schemaFile);
    } catch (const MofError& error) {
      throw OperationError(
          std::string(error.what()) +
          (error.line() == 0 ? "; name the file of the classes with --schema" : ""));
    }
  }
  return *m_schema;
}

const SchemaClass& Session::classNamed(const std::string& name) {
  const SchemaClass* found = schema().find(name);
  if (found != nullptr && !found->external) {
    return *found;
  }
  // A class of the standard schema may be asked for though no file declares it: the provider serves it.
  const std::string standardPrefix = "CIM_";
  if (name.compare(0, standardPrefix.size(), standardPrefix) == 0) {
    SchemaClass& standard = m_standardClasses[name];
    standard.name = name;
    standard.external = true;
    return standard;
  }
  std::vector<std::string> names;
  for (const SchemaClass* candidate : schema().classes()) {
    names.push_back(candidate->name);
  }
  const std::string near = suggestion(name, names);
  throw UsageError(
      statusName(CMPI_RC_ERR_INVALID_CLASS) + ": " + m_schemaFile + " has no class " + text::quoted(name) +
      (near.empty() ? "; see 'tvpcim classes'" : near));
}

ObjectPath Session::pathOf(const std::string& className) {
  ObjectPath path;
  path.nameSpace = m_options.nameSpace;
  path.className = classNamed(className).name;
  return path;
}

ObjectPath Session::parsePath(const std::string& text) {
  ObjectPath path;
  try {
    path = parsePathText(text);
  } catch (const PathSyntaxError& error) {
    throw UsageError(statusName(CMPI_RC_ERR_INVALID_PARAMETER) + ": " + printable(error.what()));
  }
  const SchemaClass& schemaClass = classNamed(path.className);
  path.className = schemaClass.name;
  if (path.nameSpace.empty()) {
    path.nameSpace = m_options.nameSpace;
  }
  for (const NamedValue& key : path.keys) {
    if (!schemaClass.external) {
      propertyNamed(schemaClass, key.name);
    }
  }
  return path;
}

Broker& Session::broker() {
  if (m_broker == nullptr) {
    schema();
    try {
      m_broker = std::make_unique<Broker>(m_schema, optionsAs(std::getenv("TVP_OBJECT_MANAGER")));
    } catch (const std::invalid_argument& error) {
      throw UsageError(std::string("TVP_OBJECT_MANAGER: ") + error.what());
    }
    m_broker->setHandlers(m_handlers);
  }
  return *m_broker;
}

Provider& Session::provider() {
  if (m_provider == nullptr) {
    CallOptions options;
    options.principal = m_options.user;
    Broker& ownBroker = broker();
    try {
      auto library = std::make_shared<ProviderLibrary>(
          m_options.provider.empty() ? installedProvider() : m_options.provider, "tarvexProProvider");
      m_provider = std::make_unique<Provider>(ownBroker, std::move(library), options);
    } catch (const ProviderLoadError& error) {
      throw OperationError(error.what());
    }
  }
  return *m_provider;
}

Operations& Session::server(const std::string& defaultUrl) {
  if (m_server == nullptr) {
    schema();
    m_server = connect(isRemote() ? m_options.url : defaultUrl, m_options, m_schema);
  }
  return *m_server;
}

Operations& Session::operations() {
  return isRemote() ? server() : provider();
}

void Session::check(const Outcome& outcome) const {
  if (!outcome.ok()) {
    throw OperationError(describe(outcome), hintOf(outcome));
  }
}

InstancesOutcome Session::enumerate(const std::string& className) {
  InstancesOutcome outcome = operations().enumerateInstances(pathOf(className));
  check(outcome);
  return outcome;
}

void Session::cleanUp(std::chrono::milliseconds limit) {
  if (m_provider == nullptr) {
    return;
  }
  std::packaged_task<Outcome()> cleaning([this] { return m_provider->cleanup(true); });
  std::future<Outcome> outcome = cleaning.get_future();
  std::thread(std::move(cleaning)).detach();
  if (outcome.wait_for(limit) == std::future_status::ready) {
    m_provider.reset();
    m_broker->reportLeaks();
    check(outcome.get());
  }
}

std::vector<std::string> Session::breaches() {
  std::vector<std::string> texts;
  if (m_broker != nullptr) {
    for (const Breach& breach : m_broker->breaches()) {
      texts.push_back(printable(breach.text));
    }
  }
  return texts;
}

}  // namespace tvp::host::tvpcim
