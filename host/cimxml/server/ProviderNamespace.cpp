// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/server/ProviderNamespace.h"

#include "host/cimxml/indications/Query.h"
#include "host/cimxml/message/Failure.h"
#include "host/schema/ObjectPathText.h"

#include <algorithm>
#include <utility>

namespace tvp::host::cimxml {
namespace {

CallOptions as(const std::string& user) {
  CallOptions options;
  options.principal = user;
  return options;
}

void check(const Outcome& outcome) {
  if (!outcome.ok()) {
    throw CimFailure(outcome.rc, outcome.message);
  }
}

template <class Element>
void append(std::vector<Element>& all, std::vector<Element> more) {
  std::move(more.begin(), more.end(), std::back_inserter(all));
}

}  // namespace

ProviderNamespace::ProviderNamespace(
    Provider& provider, std::string name, const Schema& schema, const Schema& bases)
    : ServedNamespace(withBases(schema.classes(), bases)), m_provider(provider), m_name(std::move(name)) {}

bool ProviderNamespace::isCalled(const std::string& name) const {
  return equalNames(name, m_name);
}

/**
 * Asks for each class that the provider has of a class and those below it. What one of the latter does not
 * support is as if it had no instances.
 */
template <class Ask>
void ProviderNamespace::askForEach(const ObjectPath& classPath, Ask ask) const {
  for (const SchemaClass* candidate : schema().classes()) {
    if (!schema().isA(candidate->name, classPath.className) ||
        declaredClass(m_provider.broker().schema(), candidate->name) == nullptr) {
      continue;
    }
    ObjectPath path = classPath;
    path.className = candidate->name;
    try {
      ask(path);
    } catch (const CimFailure& failure) {
      if (failure.code() != CMPI_RC_ERR_NOT_SUPPORTED || equalNames(candidate->name, classPath.className)) {
        throw;
      }
    }
  }
}

/** Object managers add what a provider leaves out of a path. */
void ProviderNamespace::complete(ObjectPath& path, const Instance* instance) const {
  path.nameSpace = m_name;
  const SchemaClass* known = schema().find(path.className);
  if (instance == nullptr || known == nullptr || !path.keys.empty()) {
    return;
  }
  for (const SchemaProperty& property : known->properties) {
    const Value* value = property.key ? instance->property(property.name) : nullptr;
    if (value != nullptr && !value->isNull()) {
      path.keys.push_back({property.name, *value});
    }
  }
}

std::vector<Instance> ProviderNamespace::completed(InstancesOutcome outcome) const {
  check(outcome);
  for (Instance& instance : outcome.instances) {
    complete(instance.path, &instance);
  }
  return std::move(outcome.instances);
}

std::vector<ObjectPath> ProviderNamespace::completed(PathsOutcome outcome) const {
  check(outcome);
  for (ObjectPath& path : outcome.paths) {
    complete(path, nullptr);
  }
  return std::move(outcome.paths);
}

std::vector<Instance> ProviderNamespace::enumerate(
    const ObjectPath& classPath, const PropertyList& properties, const std::string& user) {
  const CallOptions options = as(user);
  std::vector<Instance> all;
  askForEach(classPath, [&](const ObjectPath& path) {
    append(all, completed(m_provider.enumerateInstances(path, properties, &options)));
  });
  return all;
}

std::vector<ObjectPath>
ProviderNamespace::enumerateNames(const ObjectPath& classPath, const std::string& user) {
  const CallOptions options = as(user);
  std::vector<ObjectPath> all;
  askForEach(classPath, [&](const ObjectPath& path) {
    append(all, completed(m_provider.enumerateInstanceNames(path, &options)));
  });
  return all;
}

Instance
ProviderNamespace::get(const ObjectPath& path, const PropertyList& properties, const std::string& user) {
  const CallOptions options = as(user);
  std::vector<Instance> found = completed(m_provider.getInstance(path, properties, &options));
  if (found.empty()) {
    throw CimFailure(CMPI_RC_ERR_NOT_FOUND, toPathText(path));
  }
  return std::move(found.front());
}

ObjectPath ProviderNamespace::create(const Instance& instance, const std::string& user) {
  const CallOptions options = as(user);
  ObjectPath path;
  path.nameSpace = m_name;
  path.className = instance.path.className;
  std::vector<ObjectPath> created = completed(m_provider.createInstance(path, instance, &options));
  if (!created.empty()) {
    return std::move(created.front());
  }
  complete(path, &instance);
  return path;
}

void ProviderNamespace::modify(
    const Instance& instance, const PropertyList& properties, const std::string& user) {
  const CallOptions options = as(user);
  check(m_provider.modifyInstance(instance.path, instance, properties, &options));
}

void ProviderNamespace::remove(const ObjectPath& path, const std::string& user) {
  const CallOptions options = as(user);
  check(m_provider.deleteInstance(path, &options));
}

std::vector<Instance>
ProviderNamespace::query(const std::string& text, const std::string& language, const std::string& user) {
  const Query parsed(text, language, schema());
  ObjectPath path;
  path.nameSpace = m_name;
  path.className = parsed.className();
  const CallOptions options = as(user);
  InstancesOutcome answered = m_provider.execQuery(path, text, language, &options);
  if (answered.rc != CMPI_RC_ERR_NOT_SUPPORTED) {
    return completed(std::move(answered));
  }
  std::vector<Instance> selected;
  for (Instance& instance : enumerate(path, std::nullopt, user)) {
    if (parsed.selects(instance)) {
      selected.push_back(parsed.project(std::move(instance)));
    }
  }
  return selected;
}

std::vector<Instance> ProviderNamespace::associators(
    const ObjectPath& path, const AssociationFilter& filter, const PropertyList& properties,
    const std::string& user) {
  const CallOptions options = as(user);
  return completed(m_provider.associators(path, filter, properties, &options));
}

std::vector<ObjectPath> ProviderNamespace::associatorNames(
    const ObjectPath& path, const AssociationFilter& filter, const std::string& user) {
  const CallOptions options = as(user);
  return completed(m_provider.associatorNames(path, filter, &options));
}

std::vector<Instance> ProviderNamespace::references(
    const ObjectPath& path, const AssociationFilter& filter, const PropertyList& properties,
    const std::string& user) {
  const CallOptions options = as(user);
  return completed(m_provider.references(path, filter, properties, &options));
}

std::vector<ObjectPath> ProviderNamespace::referenceNames(
    const ObjectPath& path, const AssociationFilter& filter, const std::string& user) {
  const CallOptions options = as(user);
  return completed(m_provider.referenceNames(path, filter, &options));
}

MethodOutcome ProviderNamespace::invoke(
    const ObjectPath& path, const std::string& method, const Arguments& input, const std::string& user) {
  const CallOptions options = as(user);
  MethodOutcome outcome = m_provider.invokeMethod(path, method, input, &options);
  check(outcome);
  return outcome;
}

}  // namespace tvp::host::cimxml
