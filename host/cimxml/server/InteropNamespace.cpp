// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/server/InteropNamespace.h"

#include "host/cimxml/indications/InteropNames.h"
#include "host/cimxml/indications/Query.h"
#include "host/cimxml/message/Failure.h"
#include "host/schema/ObjectPathText.h"

#include <algorithm>
#include <utility>

namespace tvp::host::cimxml {
namespace {

constexpr char SERVER_CLASS[] = "CIM_ObjectManager";
constexpr char SERVER_NAME[] = "tvpcim";

/** The classes of both: all of the interop namespace, and the indications of the provider. */
std::vector<const SchemaClass*> classesOf(const Schema& interop, const Schema& provided) {
  std::vector<const SchemaClass*> classes = interop.classes();
  for (const SchemaClass* candidate : provided.classes()) {
    if (candidate->isIndication() && interop.find(candidate->name) == nullptr) {
      classes.push_back(candidate);
    }
  }
  return classes;
}

/** An instance of a class with those of the values that the class has. */
Instance fixedInstance(const Schema& schema, const char* className, const std::vector<NamedValue>& values) {
  Instance instance = emptyInteropInstance(schema, className);
  const SchemaClass& known = *schema.find(className);
  for (const NamedValue& value : values) {
    if (known.property(value.name) != nullptr) {
      setValue(instance.properties, value.name, value.value);
    }
  }
  takeKeys(instance, known);
  return instance;
}

}  // namespace

struct InteropNamespace::Link {
  Instance subscription;
  ObjectPath opposite;
};

InteropNamespace::InteropNamespace(
    const Schema& interop, const Schema& provided, Subscriptions& subscriptions, const std::string& provider)
    : ServedNamespace(withBases(classesOf(interop, provided), interop)), m_subscriptions(subscriptions),
      m_name(INTEROP_NAMESPACE) {
  const std::vector<NamedValue> common = {
      {"SystemCreationClassName", Value::string(SYSTEM_CLASS)},
      {"SystemName", Value::string(systemName())},
      {"ObjectManagerCreationClassName", Value::string(SERVER_CLASS)},
      {"ObjectManagerName", Value::string(SERVER_NAME)},
      {"ClassInfo", Value::uint16(2)},
      {"Started", Value::boolean(true)},
      {"EnabledState", Value::uint16(2)},
      {"GatherStatisticalData", Value::boolean(false)}};
  const auto add = [&](const char* className, const std::string& name) {
    if (declaredClass(schema(), className) != nullptr) {
      std::vector<NamedValue> values = common;
      values.push_back({"CreationClassName", Value::string(className)});
      values.push_back({"Name", Value::string(name)});
      values.push_back({"ElementName", Value::string(name)});
      m_fixed.push_back(fixedInstance(schema(), className, values));
    }
  };
  for (const std::string& nameSpace : {m_name, provider}) {
    add("CIM_Namespace", nameSpace);
    add("__Namespace", nameSpace);
  }
  add(SERVER_CLASS, SERVER_NAME);
}

bool InteropNamespace::isCalled(const std::string& name) const {
  return isInteropName(name);
}

std::vector<Instance> InteropNamespace::instances(const std::string& className) const {
  std::vector<Instance> found;
  std::copy_if(m_fixed.begin(), m_fixed.end(), std::back_inserter(found), [&](const Instance& instance) {
    return schema().isA(instance.path.className, className);
  });
  std::vector<Instance> stored = m_subscriptions.instances(className);
  std::move(stored.begin(), stored.end(), std::back_inserter(found));
  return found;
}

std::vector<Instance> InteropNamespace::enumerate(
    const ObjectPath& classPath, const PropertyList& /*properties*/, const std::string& /*user*/) {
  return instances(classPath.className);
}

std::vector<ObjectPath>
InteropNamespace::enumerateNames(const ObjectPath& classPath, const std::string& /*user*/) {
  return pathsOf(instances(classPath.className));
}

Instance InteropNamespace::get(
    const ObjectPath& path, const PropertyList& /*properties*/, const std::string& /*user*/) {
  const ObjectPath wanted = interopPath(path);
  for (const Instance& instance : m_fixed) {
    if (instance.path == wanted) {
      return instance;
    }
  }
  return m_subscriptions.get(path);
}

ObjectPath InteropNamespace::create(const Instance& instance, const std::string& user) {
  return m_subscriptions.create(instance, user);
}

void InteropNamespace::modify(
    const Instance& instance, const PropertyList& properties, const std::string& user) {
  m_subscriptions.modify(instance, properties, user);
}

void InteropNamespace::remove(const ObjectPath& path, const std::string& user) {
  m_subscriptions.remove(path, user);
}

std::vector<Instance>
InteropNamespace::query(const std::string& text, const std::string& language, const std::string& /*user*/) {
  const Query parsed(text, language, schema());
  std::vector<Instance> selected;
  for (Instance& instance : instances(parsed.className())) {
    if (parsed.selects(instance)) {
      selected.push_back(parsed.project(std::move(instance)));
    }
  }
  return selected;
}

/** The subscriptions that a path is an end of, as far as the filter admits them. */
std::vector<InteropNamespace::Link>
InteropNamespace::links(const ObjectPath& path, const AssociationFilter& filter) const {
  std::vector<Link> found;
  const ObjectPath wanted = interopPath(path);
  const auto admits = [this](const std::string& restriction, const std::string& className) {
    return restriction.empty() || schema().isA(className, restriction);
  };
  for (const Instance& subscription : m_subscriptions.instances(SUBSCRIPTION_CLASS)) {
    for (const auto& [role, resultRole] : {std::pair("Filter", "Handler"), std::pair("Handler", "Filter")}) {
      const ObjectPath& opposite = subscription.property(resultRole)->asReference();
      if (subscription.property(role)->asReference() == wanted &&
          (filter.role.empty() || equalNames(filter.role, role)) &&
          (filter.resultRole.empty() || equalNames(filter.resultRole, resultRole)) &&
          admits(filter.associationClass, subscription.path.className) &&
          admits(filter.resultClass, opposite.className)) {
        found.push_back({subscription, opposite});
      }
    }
  }
  return found;
}

std::vector<Instance> InteropNamespace::associators(
    const ObjectPath& path, const AssociationFilter& filter, const PropertyList& /*properties*/,
    const std::string& /*user*/) {
  std::vector<Instance> found;
  for (const Link& link : links(path, filter)) {
    found.push_back(m_subscriptions.get(link.opposite));
  }
  return found;
}

std::vector<ObjectPath> InteropNamespace::associatorNames(
    const ObjectPath& path, const AssociationFilter& filter, const std::string& user) {
  return pathsOf(associators(path, filter, std::nullopt, user));
}

std::vector<Instance> InteropNamespace::references(
    const ObjectPath& path, const AssociationFilter& filter, const PropertyList& /*properties*/,
    const std::string& /*user*/) {
  // The class of a result is here that of the association.
  AssociationFilter ends;
  ends.associationClass = filter.resultClass;
  ends.role = filter.role;
  std::vector<Instance> found;
  for (Link& link : links(path, ends)) {
    found.push_back(std::move(link.subscription));
  }
  return found;
}

std::vector<ObjectPath> InteropNamespace::referenceNames(
    const ObjectPath& path, const AssociationFilter& filter, const std::string& user) {
  return pathsOf(references(path, filter, std::nullopt, user));
}

MethodOutcome InteropNamespace::invoke(
    const ObjectPath& path, const std::string& method, const Arguments& /*input*/,
    const std::string& /*user*/) {
  throw CimFailure(CMPI_RC_ERR_METHOD_NOT_FOUND, path.className + " has no method " + method);
}

}  // namespace tvp::host::cimxml
