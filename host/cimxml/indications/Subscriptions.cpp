// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/indications/Subscriptions.h"

#include "host/cimxml/indications/ActiveSubscriptions.h"
#include "host/cimxml/indications/InteropNames.h"
#include "host/cimxml/indications/SubscriptionRules.h"
#include "host/cimxml/indications/SubscriptionsFile.h"
#include "host/cimxml/message/Failure.h"
#include "host/schema/ObjectPathText.h"

#include <algorithm>
#include <mutex>
#include <utility>

namespace tvp::host::cimxml {
namespace {

using Records = std::vector<std::shared_ptr<const StoredInstance>>;

constexpr const char* KINDS[] = {FILTER_CLASS, HANDLER_CLASS, SUBSCRIPTION_CLASS};

bool refersTo(const Instance& subscription, const ObjectPath& path) {
  return subscription.property("Filter")->asReference() == path ||
         subscription.property("Handler")->asReference() == path;
}

bool isListed(const PropertyList& properties, const std::string& name) {
  return !properties ||
         std::any_of(properties->begin(), properties->end(), [&name](const std::string& listed) {
           return equalNames(listed, name);
         });
}

/** An instance with the SubscriptionState that a client wants. @throws CimFailure if it wants anything else
 */
Instance stateChanged(Instance before, const Instance& wanted, const PropertyList& properties) {
  for (const NamedValue& property : wanted.properties) {
    const Value* present = before.property(property.name);
    const bool unchanged = present != nullptr && *present == property.value;
    if (!isListed(properties, property.name) || property.value.isNull() || unchanged) {
      continue;
    }
    if (present == nullptr || !equalNames(property.name, "SubscriptionState")) {
      throw CimFailure(
          CMPI_RC_ERR_NOT_SUPPORTED, "only the SubscriptionState of a subscription can be modified; delete "
                                     "the instance and create another");
    }
    setValue(before.properties, property.name, property.value);
  }
  return before;
}

}  // namespace

struct Subscriptions::Content {
  Content(std::shared_ptr<const Schema> classes, Options given)
      : interop(std::move(classes)), options(std::move(given)), file(options.file) {
    for (StoredInstance& stored : file.read(*interop)) {
      stored.instance.path = interopPath(stored.instance.path);
      records.push_back(std::make_shared<const StoredInstance>(std::move(stored)));
    }
  }

  Records snapshot() const {
    const std::lock_guard<std::mutex> lock(state);
    return records;
  }

  std::shared_ptr<const StoredInstance> find(const ObjectPath& path) const {
    const ObjectPath wanted = interopPath(path);
    for (const auto& record : snapshot()) {
      if (record->instance.path == wanted) {
        return record;
      }
    }
    return nullptr;
  }

  /** @throws CimFailure when there is none */
  std::shared_ptr<const StoredInstance> get(const ObjectPath& path) const {
    std::shared_ptr<const StoredInstance> found = find(path);
    if (found == nullptr) {
      throw CimFailure(CMPI_RC_ERR_NOT_FOUND, toPathText(path));
    }
    return found;
  }

  /** What a reference of a subscription names. @throws CimFailure */
  const Instance& end(const Instance& subscription, const char* property, const char* className) const {
    const ObjectPath& path = subscription.property(property)->asReference();
    const std::shared_ptr<const StoredInstance> found = find(path);
    if (found == nullptr || !interop->isA(found->instance.path.className, className)) {
      throw CimFailure(
          CMPI_RC_ERR_INVALID_PARAMETER,
          std::string("the ") + property + " of the subscription does not exist: " + toPathText(path));
    }
    return found->instance;  // kept by the records: the lock on changes is held
  }

  SubscriptionParts parts(const Instance& subscription, const std::string& owner) const {
    return {
        subscription.path, end(subscription, "Filter", FILTER_CLASS),
        end(subscription, "Handler", HANDLER_CLASS), owner};
  }

  ActiveSubscriptions& provider() const {
    if (active == nullptr) {
      throw CimFailure(CMPI_RC_ERR_FAILED, "the server is starting or ending: it takes no subscriptions");
    }
    return *active;
  }

  /** The kind of an instance. @throws CimFailure for a class that cannot be created */
  const char* kindOf(const std::string& className) const {
    const SchemaClass* known = interop->find(className);
    for (const char* kind : KINDS) {
      if (known != nullptr && interop->isA(known->name, kind) &&
          findValue(known->qualifiers, "Abstract") == nullptr) {
        return kind;
      }
    }
    throw CimFailure(CMPI_RC_ERR_NOT_SUPPORTED, "instances of " + className + " cannot be created");
  }

  void checkLimit(const char* kind) const {
    const Records all = snapshot();
    const auto count = std::count_if(all.begin(), all.end(), [&](const auto& record) {
      return interop->isA(record->instance.path.className, kind);
    });
    if (static_cast<std::size_t>(count) >= LIMIT) {
      throw CimFailure(
          CMPI_RC_ERR_FAILED, "there are " + std::to_string(LIMIT) + " instances of " + kind +
                                  " already; delete those that are not needed");
    }
  }

  /** Stores the records, and makes them those of this object. @throws CimFailure; then nothing has changed */
  void commit(Records changed) {
    std::vector<const StoredInstance*> stored;
    for (const auto& record : changed) {
      stored.push_back(record.get());
    }
    try {
      file.write(stored);
    } catch (const std::runtime_error& error) {
      throw CimFailure(CMPI_RC_ERR_FAILED, error.what());
    }
    const std::lock_guard<std::mutex> lock(state);
    records = std::move(changed);
  }

  void report(const std::string& line) const {
    if (options.log) {
      options.log(line);
    }
  }

  const std::shared_ptr<const Schema> interop;
  const Options options;
  std::mutex changes;  ///< held during a change, with its calls of the provider
  SubscriptionsFile file;
  mutable std::mutex state;  ///< guards the records; never held while anything is waited for
  Records records;
  std::shared_ptr<ActiveSubscriptions> active;  ///< null before attach() and after stop()
};

Subscriptions::Subscriptions(std::shared_ptr<const Schema> interop, Options options)
    : m_content(std::make_unique<Content>(std::move(interop), std::move(options))) {}

Subscriptions::~Subscriptions() {
  stop();
}

void Subscriptions::attach(Provider& provider) {
  const std::lock_guard<std::mutex> lock(m_content->changes);
  const auto active = std::make_shared<ActiveSubscriptions>(
      provider, m_content->options.nameSpace, m_content->options.delivery, m_content->options.log);
  {
    const std::lock_guard<std::mutex> state(m_content->state);
    m_content->active = active;
  }
  for (const auto& record : m_content->snapshot()) {
    const Instance& instance = record->instance;
    if (!m_content->interop->isA(instance.path.className, SUBSCRIPTION_CLASS) || !isEnabled(instance)) {
      continue;
    }
    try {
      active->start(m_content->parts(instance, record->owner));
    } catch (const CimFailure& failure) {
      m_content->report(
          "the stored subscription " + toPathText(instance.path) +
          " is not active: " + statusName(failure.code()) + ": " + failure.what());
    }
  }
}

void Subscriptions::deliver(const std::string& /*nameSpace*/, const Instance& indication) {
  std::shared_ptr<ActiveSubscriptions> active;
  {
    const std::lock_guard<std::mutex> lock(m_content->state);
    active = m_content->active;
  }
  if (active != nullptr) {
    active->deliver(indication);
  }
}

void Subscriptions::stop() {
  const std::lock_guard<std::mutex> lock(m_content->changes);
  std::shared_ptr<ActiveSubscriptions> active;
  {
    const std::lock_guard<std::mutex> state(m_content->state);
    active.swap(m_content->active);
  }
  if (active != nullptr) {
    active->clear();
  }
}

std::vector<Instance> Subscriptions::instances(const std::string& className) const {
  std::vector<Instance> result;
  for (const auto& record : m_content->snapshot()) {
    if (m_content->interop->isA(record->instance.path.className, className)) {
      result.push_back(record->instance);
    }
  }
  return result;
}

Instance Subscriptions::get(const ObjectPath& path) const {
  return m_content->get(path)->instance;
}

ObjectPath Subscriptions::create(const Instance& instance, const std::string& user) {
  const std::lock_guard<std::mutex> lock(m_content->changes);
  ActiveSubscriptions& active = m_content->provider();
  const char* kind = m_content->kindOf(instance.path.className);
  const auto record = std::make_shared<const StoredInstance>(
      StoredInstance{completeInstance(instance, *m_content->interop), user});
  const Instance& added = record->instance;
  if (m_content->find(added.path) != nullptr) {
    throw CimFailure(CMPI_RC_ERR_ALREADY_EXISTS, toPathText(added.path));
  }
  m_content->checkLimit(kind);
  if (equalNames(kind, FILTER_CLASS)) {
    static_cast<void>(active.query(added));
  } else if (equalNames(kind, HANDLER_CLASS)) {
    checkHandler(added);
  } else {
    checkSubscription(added);
    const SubscriptionParts parts = m_content->parts(added, user);
    if (isEnabled(added)) {
      active.start(parts);
    }
  }
  Records changed = m_content->snapshot();
  changed.push_back(record);
  try {
    m_content->commit(std::move(changed));
  } catch (const CimFailure&) {
    active.end(added.path);
    throw;
  }
  return added.path;
}

void Subscriptions::modify(
    const Instance& instance, const PropertyList& properties, const std::string& user) {
  const std::lock_guard<std::mutex> lock(m_content->changes);
  ActiveSubscriptions& active = m_content->provider();
  const std::shared_ptr<const StoredInstance> before = m_content->get(instance.path);
  const auto after = std::make_shared<StoredInstance>(
      StoredInstance{stateChanged(before->instance, instance, properties), user});
  if (after->instance == before->instance) {
    return;
  }
  const ObjectPath& path = before->instance.path;
  checkSubscription(completeInstance(after->instance, *m_content->interop));
  setValue(after->instance.properties, "TimeOfLastStateChange", Value::dateTime(DateTime::now()));
  const bool enabled = isEnabled(after->instance);
  if (enabled) {
    active.start(m_content->parts(after->instance, user));
  }
  Records changed = m_content->snapshot();
  std::replace(changed.begin(), changed.end(), before, std::shared_ptr<const StoredInstance>(after));
  try {
    m_content->commit(std::move(changed));
  } catch (const CimFailure&) {
    if (enabled) {
      active.end(path);
    }
    throw;
  }
  if (!enabled) {
    active.end(path);
  }
}

void Subscriptions::remove(const ObjectPath& path, const std::string& /*user*/) {
  const std::lock_guard<std::mutex> lock(m_content->changes);
  ActiveSubscriptions& active = m_content->provider();
  const std::shared_ptr<const StoredInstance> removed = m_content->get(path);
  Records changed = m_content->snapshot();
  changed.erase(std::find(changed.begin(), changed.end(), removed));
  for (const auto& record : changed) {
    if (m_content->interop->isA(record->instance.path.className, SUBSCRIPTION_CLASS) &&
        refersTo(record->instance, removed->instance.path)) {
      throw CimFailure(
          CMPI_RC_ERR_FAILED,
          "it is used by the subscription " + toPathText(record->instance.path) + "; delete that first");
    }
  }
  m_content->commit(std::move(changed));
  active.end(removed->instance.path);
}

}  // namespace tvp::host::cimxml
