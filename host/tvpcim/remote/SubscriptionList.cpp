// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/remote/SubscriptionList.h"

#include "host/cimxml/client/CimClient.h"
#include "host/schema/Names.h"
#include "host/tvpcim/Failure.h"
#include "host/tvpcim/output/Listing.h"
#include "host/tvpcim/output/Text.h"

#include <algorithm>

namespace tvp::host::tvpcim {
namespace {

constexpr const char* FILTER = "CIM_IndicationFilter";
constexpr const char* HANDLER = "CIM_ListenerDestinationCIMXML";
constexpr const char* SUBSCRIPTION = "CIM_IndicationSubscription";

/** The names that object managers give to the interop namespace. */
const std::vector<std::string> INTEROP_NAMES = {"root/interop", "root/PG_InterOp", "interop"};

ObjectPath classPath(const std::string& nameSpace, const std::string& className) {
  return {nameSpace, className, {}, ""};
}

}  // namespace

SubscriptionList::SubscriptionList(Session& session)
    : m_session(session), m_server(session.server(DEFAULT_URL)) {
  for (const std::string& name : INTEROP_NAMES) {
    const Outcome outcome = probe(classPath(name, SUBSCRIPTION));
    if (outcome.rc != CMPI_RC_ERR_INVALID_NAMESPACE) {
      m_session.check(outcome);
      m_nameSpace = name;
      return;
    }
  }
  throw OperationError(
      "the server has no interop namespace, where subscriptions are: none of " + join(INTEROP_NAMES, ", "));
}

Outcome SubscriptionList::probe(const ObjectPath& path) {
  try {
    return m_server.enumerateInstanceNames(path);
  } catch (const cimxml::ServerError& error) {
    if (m_session.isRemote()) {
      throw;
    }
    throw OperationError(error.what(), "start one with 'tvpcim serve', or name another with --url");
  }
}

std::string SubscriptionList::textAt(const ObjectPath& path, const std::string& property) {
  const InstancesOutcome found = m_server.getInstance(path);
  return found.ok() && !found.instances.empty() ? textOf(found.instances.front(), property) : "";
}

ObjectPath SubscriptionList::referenceOf(const Instance& subscription, const std::string& property) const {
  const Value* value = subscription.property(property);
  ObjectPath path;
  if (value != nullptr && !value->isNull() && value->type() == CMPI_ref) {
    path = value->asReference();
  }
  if (path.nameSpace.empty()) {
    path.nameSpace = m_nameSpace;
  }
  return path;
}

std::vector<Subscription> SubscriptionList::all() {
  const InstancesOutcome outcome = m_server.enumerateInstances(classPath(m_nameSpace, SUBSCRIPTION));
  m_session.check(outcome);
  std::vector<Subscription> found;
  for (const Instance& instance : outcome.instances) {
    Subscription subscription;
    subscription.path = instance.path;
    subscription.filter = referenceOf(instance, "Filter");
    subscription.handler = referenceOf(instance, "Handler");
    const Value* name = subscription.filter.key("Name");
    subscription.name = name == nullptr || name->type() != CMPI_string ? "" : name->asString();
    subscription.query = textAt(subscription.filter, "Query");
    subscription.destination = textAt(subscription.handler, "Destination");
    found.push_back(std::move(subscription));
  }
  return found;
}

ObjectPath SubscriptionList::create(const std::string& className, std::vector<NamedValue> properties) {
  Instance instance;
  instance.path = classPath(m_nameSpace, className);
  instance.properties = std::move(properties);
  const PathsOutcome outcome = m_server.createInstance(instance.path, instance);
  if (outcome.rc == CMPI_RC_ERR_ALREADY_EXISTS) {
    throw OperationError(describe(outcome), "choose another name with --name, or remove what has this one");
  }
  m_session.check(outcome);
  if (outcome.paths.empty()) {
    throw OperationError("the server created the " + className + ", but does not say where it is");
  }
  return outcome.paths.front();
}

Subscription SubscriptionList::add(Subscription added, Lifetime lifetime) {
  constexpr std::uint16_t PERMANENT = 2;
  constexpr std::uint16_t TRANSIENT = 3;
  const auto named = [&](const char* className) {
    return std::vector<NamedValue>{
        {"SystemCreationClassName", Value::string("CIM_ComputerSystem")},
        {"CreationClassName", Value::string(className)},
        {"Name", Value::string(added.name)}};
  };
  std::vector<NamedValue> filter = named(FILTER);
  // Object managers look for the class of the indication where the provider was registered for it.
  filter.push_back({"SourceNamespace", Value::string(m_nameSpace)});
  filter.push_back({"Query", Value::string(added.query)});
  filter.push_back({"QueryLanguage", Value::string("WQL")});
  std::vector<NamedValue> handler = named(HANDLER);
  handler.push_back({"Destination", Value::string(added.destination)});
  handler.push_back(
      {"PersistenceType", Value::uint16(lifetime == Lifetime::Permanent ? PERMANENT : TRANSIENT)});
  std::vector<ObjectPath> created;
  try {
    created.push_back(added.filter = create(FILTER, std::move(filter)));
    created.push_back(added.handler = create(HANDLER, std::move(handler)));
    added.path = create(
        SUBSCRIPTION,
        {{"Filter", Value::reference(added.filter)}, {"Handler", Value::reference(added.handler)}});
  } catch (const OperationError&) {
    for (const ObjectPath& path : created) {
      static_cast<void>(m_server.deleteInstance(path));
    }
    throw;
  }
  return added;
}

void SubscriptionList::remove(const std::string& name) {
  std::vector<Subscription> others = all();
  const auto found = std::stable_partition(
      others.begin(), others.end(), [&](const Subscription& each) { return each.name != name; });
  const std::vector<Subscription> removed(found, others.end());
  if (removed.empty()) {
    throw OperationError(
        statusName(CMPI_RC_ERR_NOT_FOUND) + ": there is no subscription " + text::quoted(name) +
        "; see 'tvpcim subscriptions'");
  }
  others.erase(found, others.end());
  for (const Subscription& subscription : removed) {
    m_session.check(m_server.deleteInstance(subscription.path));
    for (const auto part : {&Subscription::filter, &Subscription::handler}) {
      const ObjectPath& path = subscription.*part;
      const bool used = std::any_of(
          others.begin(), others.end(), [&](const Subscription& other) { return other.*part == path; });
      // Several of the removed may share one: it is gone after the first.
      const Outcome outcome = used ? Outcome() : m_server.deleteInstance(path);
      if (outcome.rc != CMPI_RC_ERR_NOT_FOUND && &subscription == &removed.back()) {
        m_session.check(outcome);
      }
    }
  }
}

}  // namespace tvp::host::tvpcim
