// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/indications/SubscriptionRules.h"

#include "host/cimxml/indications/Destination.h"
#include "host/cimxml/indications/InteropNames.h"
#include "host/cimxml/indications/QueryCondition.h"
#include "host/cimxml/message/Failure.h"
#include "text/Quote.h"

#include <algorithm>
#include <utility>

namespace tvp::host::cimxml {
namespace {

[[noreturn]] void refuse(const std::string& problem) {
  throw CimFailure(CMPI_RC_ERR_INVALID_PARAMETER, problem);
}

void setDefault(Instance& instance, const std::string& property, Value value) {
  if (const Value* present = instance.property(property); present != nullptr && present->isNull()) {
    setValue(instance.properties, property, std::move(value));
  }
}

void setDefaults(Instance& instance) {
  setDefault(instance, "SystemCreationClassName", Value::string(SYSTEM_CLASS));
  setDefault(instance, "SystemName", Value::string(systemName()));
  setDefault(instance, "CreationClassName", Value::string(instance.path.className));
  if (instance.property("SourceNamespaces") != nullptr && instance.property("SourceNamespaces")->isNull()) {
    setDefault(instance, "SourceNamespace", Value::string(INTEROP_NAMESPACE));
  }
  setDefault(instance, "QueryLanguage", Value::string("WQL"));
  setDefault(instance, "PersistenceType", Value::uint16(2));
  setDefault(instance, "Protocol", Value::uint16(2));
  setDefault(instance, "SubscriptionState", Value::uint16(SUBSCRIPTION_ENABLED));
  setDefault(instance, "OnFatalErrorPolicy", Value::uint16(2));
  setDefault(instance, "RepeatNotificationPolicy", Value::uint16(2));
  setDefault(instance, "TimeOfLastStateChange", Value::dateTime(DateTime::now()));
  setDefault(instance, "SubscriptionStartTime", Value::dateTime(DateTime::now()));
}

/** A value as the class declares it. COMPAT: clients that write a reference as a text. */
Value typedValue(const Value& given, const SchemaProperty& property) {
  if (given.isNull()) {
    return Value::null(property.type);
  }
  if (property.type == CMPI_ref) {
    ObjectPath subscription;
    subscription.className = SUBSCRIPTION_CLASS;
    subscription.keys = {{property.name, given}};
    Value reference = interopPath(subscription).keys.front().value;
    if (reference.type() == CMPI_ref) {
      return reference;
    }
  }
  if (given.type() != property.type) {
    refuse(property.name + " is " + typeName(property.type) + ", not " + typeName(given.type()));
  }
  return given;
}

void checkNumber(
    const Instance& instance, const char* property, std::initializer_list<unsigned int> offered) {
  const Value* value = instance.property(property);
  if (value == nullptr || value->isNull() ||
      std::find(offered.begin(), offered.end(), value->asUnsigned()) != offered.end()) {
    return;
  }
  std::string list;
  for (const unsigned int number : offered) {
    list += (list.empty() ? "" : " or ") + std::to_string(number);
  }
  throw CimFailure(
      CMPI_RC_ERR_NOT_SUPPORTED,
      std::string(property) + " " + value->toText() + " is not supported; it can be " + list);
}

void checkSource(const std::string& source, const std::string& nameSpace) {
  if (!isInteropName(source) && !equalNames(source, nameSpace)) {
    refuse(
        "the source namespace " + text::quoted(source) + " has no indications; use " + INTEROP_NAMESPACE +
        (nameSpace.empty() ? "" : " or " + nameSpace));
  }
}

void checkSources(const Instance& filter, const std::string& nameSpace) {
  const Value* several = filter.property("SourceNamespaces");
  if (several != nullptr && !several->isNull()) {
    for (const Value& source : several->asArray()) {
      checkSource(source.isNull() ? "" : source.asString(), nameSpace);
    }
  } else {
    checkSource(textOf(filter, "SourceNamespace"), nameSpace);
  }
}

}  // namespace

std::string textOf(const Instance& instance, const std::string& property) {
  const Value* value = instance.property(property);
  return value == nullptr || value->isNull() ? "" : value->asString();
}

Instance completeInstance(const Instance& given, const Schema& interop) {
  const SchemaClass& known = *interop.find(given.path.className);
  Instance whole = emptyInteropInstance(interop, known.name);
  for (const NamedValue& property : given.properties) {
    const SchemaProperty* declared = known.property(property.name);
    if (declared == nullptr) {
      refuse(known.name + " has no property " + text::quoted(property.name));
    }
    setValue(whole.properties, declared->name, typedValue(property.value, *declared));
  }
  setDefaults(whole);
  for (const SchemaProperty& property : known.properties) {
    const Value& value = *whole.property(property.name);
    if (property.key && (value.isNull() || value == Value::string(""))) {
      refuse(property.name + " is a key and has no value");
    }
  }
  if (known.property("CreationClassName") != nullptr &&
      !equalNames(textOf(whole, "CreationClassName"), known.name)) {
    refuse("CreationClassName is not the name of the class, " + known.name);
  }
  takeKeys(whole, known);
  return whole;
}

Query queryOf(const Instance& filter, const Schema& classes, const std::string& nameSpace) {
  checkSources(filter, nameSpace);
  try {
    Query query(textOf(filter, "Query"), textOf(filter, "QueryLanguage"), classes);
    const std::vector<const SchemaClass*> all = classes.classes();
    if (std::none_of(all.begin(), all.end(), [&](const SchemaClass* candidate) {
          return candidate->isIndication() && isKindOf(classes, candidate->name, query.className());
        })) {
      refuse(query.className() + " is not a class of indications that there are");
    }
    return query;
  } catch (const CimFailure& failure) {
    switch (failure.code()) {
    case CMPI_RC_ERR_QUERY_LANGUAGE_NOT_SUPPORTED:
      throw CimFailure(CMPI_RC_ERR_NOT_SUPPORTED, failure.what());
    case CMPI_RC_ERR_INVALID_CLASS:
      refuse("the query names a class that does not exist: " + std::string(failure.what()));
    case CMPI_RC_ERR_INVALID_QUERY:
      refuse("the query cannot be read: " + std::string(failure.what()));
    default:
      throw;
    }
  }
}

void checkHandler(const Instance& handler) {
  Destination::parse(textOf(handler, "Destination"));
  checkNumber(handler, "PersistenceType", {2, 3});
  checkNumber(handler, "Protocol", {2});
}

void checkSubscription(const Instance& subscription) {
  checkNumber(subscription, "SubscriptionState", {SUBSCRIPTION_ENABLED, SUBSCRIPTION_DISABLED});
  checkNumber(subscription, "OnFatalErrorPolicy", {2});
  checkNumber(subscription, "RepeatNotificationPolicy", {0, 2});
  if (!subscription.property("SubscriptionDuration")->isNull()) {
    throw CimFailure(
        CMPI_RC_ERR_NOT_SUPPORTED,
        "subscriptions last until they are deleted: SubscriptionDuration is not supported");
  }
}

bool isEnabled(const Instance& subscription) {
  return *subscription.property("SubscriptionState") == Value::uint16(SUBSCRIPTION_ENABLED);
}

}  // namespace tvp::host::cimxml
