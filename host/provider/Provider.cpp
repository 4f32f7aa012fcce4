// SPDX-License-Identifier: Apache-2.0
#include "host/provider/Provider.h"

#include "host/broker/EntryPoint.h"

#include <thread>
#include <utility>

namespace tvp::host {
namespace {

/** One kind of call. */
struct Operation {
  const char* name;
  bool endMark;  ///< success requires the end mark of the result
};

std::string messageOf(const CMPIStatus& status) {
  Object<CMPIString>* text = livingObject(status.msg, "the host's reading of a status message");
  return text == nullptr ? "" : text->content().text.value_or("");
}

void collect(const Request&, Outcome&) {}

void collect(const Request& request, InstancesOutcome& outcome) {
  outcome.instances = request.instances();
}

void collect(const Request& request, PathsOutcome& outcome) {
  outcome.paths = request.paths();
}

void collect(const Request& request, MethodOutcome& outcome) {
  if (!request.data().empty()) {
    outcome.returnValue = request.data().back();
  }
}

/** One request: the body makes the objects and the call, and returns the provider's status. */
template <class Result, class MI, class Body>
Result
call(Broker& broker, const CallOptions& options, MI* interface, const Operation& operation, Body body) {
  Result outcome;
  if (interface == nullptr) {
    outcome.rc = CMPI_RC_ERR_NOT_SUPPORTED;
    outcome.message = std::string("the provider has no interface for ") + operation.name;
    return outcome;
  }
  Request request(broker, options);
  const CMPIStatus status = body(request, outcome);
  outcome.rc = status.rc;
  outcome.message = messageOf(status);
  if (outcome.message.empty() && status.rc != CMPI_RC_OK) {
    outcome.message = request.error();
  }
  outcome.remarks = request.remarks();
  collect(request, outcome);
  if (operation.endMark && status.rc == CMPI_RC_OK && !request.done()) {
    broker.addBreach(
        BreachKind::MissingEndMark,
        std::string(operation.name) + " answered success without marking the end of its result");
  }
  return outcome;
}

/** A list of names as the C interface expects it; valid as long as this object exists. */
class NameList {
public:
  explicit NameList(PropertyList names) : m_names(std::move(names)) {
    if (m_names) {
      for (const std::string& name : *m_names) {
        m_pointers.push_back(name.c_str());
      }
      m_pointers.push_back(nullptr);
    }
  }
  NameList(const NameList&) = delete;
  NameList& operator=(const NameList&) = delete;

  /** Null if there was no list. */
  const char** get() { return m_pointers.empty() ? nullptr : m_pointers.data(); }

private:
  const PropertyList m_names;
  std::vector<const char*> m_pointers;
};

const char* orNull(const std::string& text) {
  return text.empty() ? nullptr : text.c_str();
}

/** An object manager passes whole instances: what the caller left out is present, without a value. */
Instance wholeInstance(const Schema& schema, const Instance& given) {
  if (schema.find(given.path.className) == nullptr) {
    return given;
  }
  Instance whole = schema.emptyInstance(given.path);
  for (const NamedValue& property : given.properties) {
    setValue(whole.properties, property.name, property.value);
  }
  return whole;
}

PropertyList namesOfSetProperties(const Instance& instance) {
  std::vector<std::string> names;
  for (const NamedValue& property : instance.properties) {
    if (!property.value.isNull()) {
      names.push_back(property.name);
    }
  }
  return names;
}

ObjectPath filterPath(const IndicationFilter& filter) {
  ObjectPath path = filter.path;
  if (path.className.empty()) {
    path.className = filter.className;
  }
  return path;
}

/** The form of the operations on a path: context, result, path, and what the operation adds to them. */
template <class Result, class MI, class Table, class Function, class... More>
Result onPath(
    Broker& broker, const CallOptions& options, MI* interface, const Operation& operation,
    Function Table::*slot, const ObjectPath& path, More... more) {
  return call<Result>(broker, options, interface, operation, [&](Request& request, Outcome&) {
    return (interface->ft->*slot)(
        interface, request.context(), request.result(), request.objectPath(managerPath(path)), more...);
  });
}

/** The form of the operations on an indication filter. */
template <class Function, class... More>
Outcome onFilter(
    Broker& broker, const CallOptions& options, CMPIIndicationMI* interface, const char* name,
    Function CMPIIndicationMIFT::*slot, const IndicationFilter& filter, More... more) {
  return call<Outcome>(broker, options, interface, {name, false}, [&](Request& request, Outcome&) {
    return (interface->ft->*slot)(
        interface, request.context(), request.selectExpression(filter.query, filter.language),
        filter.className.c_str(), request.objectPath(filterPath(filter)), more...);
  });
}

}  // namespace

ObjectPath managerPath(ObjectPath path) {
  for (NamedValue& key : path.keys) {
    switch (key.value.type()) {
    case CMPI_uint8:
    case CMPI_uint16:
    case CMPI_uint32:
    case CMPI_uint64:
      key.value = Value::sint64(static_cast<std::int64_t>(key.value.asUnsigned()));
      break;
    case CMPI_sint8:
    case CMPI_sint16:
    case CMPI_sint32:
      key.value = Value::sint64(key.value.asSigned());
      break;
    default:
      break;
    }
  }
  return path;
}

Provider::Provider(Broker& broker, const ProviderFactories& factories, CallOptions defaults)
    : m_broker(broker), m_defaults(std::move(defaults)) {
  createInterfaces(factories);
}

Provider::Provider(Broker& broker, std::shared_ptr<ProviderLibrary> library, CallOptions defaults)
    : m_broker(broker), m_library(std::move(library)), m_defaults(std::move(defaults)) {
  createInterfaces(m_library->factories());
}

Provider::~Provider() {
  if (m_library != nullptr && !m_cleanedUp) {
    m_library->keepLoaded();
  }
}

void Provider::createInterfaces(const ProviderFactories& factories) {
  const auto create = [this](auto factory) -> decltype(factory(nullptr, nullptr, nullptr)) {
    if (factory == nullptr) {
      return nullptr;
    }
    Request request(m_broker, m_defaults);
    CMPIStatus status{};
    return factory(m_broker.cmpi(), request.context(), &status);
  };
  m_instanceMI = create(factories.instance);
  m_methodMI = create(factories.method);
  m_associationMI = create(factories.association);
  m_indicationMI = create(factories.indication);
}

const CallOptions& Provider::optionsOr(const CallOptions* options) const {
  return options == nullptr ? m_defaults : *options;
}

InstancesOutcome Provider::enumerateInstances(
    const ObjectPath& path, const PropertyList& properties, const CallOptions* options) {
  NameList names(properties);
  return onPath<InstancesOutcome>(
      m_broker, optionsOr(options), m_instanceMI, {"enumerateInstances", true},
      &CMPIInstanceMIFT::enumerateInstances, path, names.get());
}

PathsOutcome Provider::enumerateInstanceNames(const ObjectPath& path, const CallOptions* options) {
  return onPath<PathsOutcome>(
      m_broker, optionsOr(options), m_instanceMI, {"enumerateInstanceNames", true},
      &CMPIInstanceMIFT::enumerateInstanceNames, path);
}

InstancesOutcome
Provider::getInstance(const ObjectPath& path, const PropertyList& properties, const CallOptions* options) {
  NameList names(properties);
  return onPath<InstancesOutcome>(
      m_broker, optionsOr(options), m_instanceMI, {"getInstance", true}, &CMPIInstanceMIFT::getInstance, path,
      names.get());
}

PathsOutcome
Provider::createInstance(const ObjectPath& path, const Instance& instance, const CallOptions* options) {
  PathsOutcome outcome = call<PathsOutcome>(
      m_broker, optionsOr(options), m_instanceMI, {"createInstance", true}, [&](Request& request, Outcome&) {
        return m_instanceMI->ft->createInstance(
            m_instanceMI, request.context(), request.result(), request.objectPath(managerPath(path)),
            request.instance(wholeInstance(m_broker.schema(), instance)));
      });
  if (outcome.ok() && outcome.paths.empty() && m_broker.options().manager == ObjectManager::Sfcb) {
    m_broker.addBreach(
        BreachKind::EmptyAnswer, "createInstance answered success without a path, which this object manager "
                                 "takes without looking");
  }
  return outcome;
}

Outcome Provider::modifyInstance(
    const ObjectPath& path, const Instance& instance, const PropertyList& properties,
    const CallOptions* options) {
  const bool passesAsGiven = properties || m_broker.options().manager == ObjectManager::Sfcb;
  NameList names(passesAsGiven ? properties : namesOfSetProperties(instance));
  return call<Outcome>(
      m_broker, optionsOr(options), m_instanceMI, {"modifyInstance", false}, [&](Request& request, Outcome&) {
        return m_instanceMI->ft->modifyInstance(
            m_instanceMI, request.context(), request.result(), request.objectPath(managerPath(path)),
            request.instance(wholeInstance(m_broker.schema(), instance)), names.get());
      });
}

Outcome Provider::deleteInstance(const ObjectPath& path, const CallOptions* options) {
  return onPath<Outcome>(
      m_broker, optionsOr(options), m_instanceMI, {"deleteInstance", false},
      &CMPIInstanceMIFT::deleteInstance, path);
}

InstancesOutcome Provider::execQuery(
    const ObjectPath& path, const std::string& query, const std::string& language,
    const CallOptions* options) {
  return onPath<InstancesOutcome>(
      m_broker, optionsOr(options), m_instanceMI, {"execQuery", false}, &CMPIInstanceMIFT::execQuery, path,
      query.c_str(), language.c_str());
}

MethodOutcome Provider::invokeMethod(
    const ObjectPath& path, const std::string& method, const Arguments& input, const CallOptions* options) {
  const SchemaClass* known = m_broker.schema().find(path.className);
  const SchemaMethod* declared = known == nullptr ? nullptr : known->method(method);
  return call<MethodOutcome>(
      m_broker, optionsOr(options), m_methodMI, {"invokeMethod", true},
      [&](Request& request, MethodOutcome& outcome) {
        CMPIArgs* output = request.outputArguments(declared);
        const CMPIStatus status = m_methodMI->ft->invokeMethod(
            m_methodMI, request.context(), request.result(), request.objectPath(managerPath(path)),
            method.c_str(), request.arguments(input), output);
        outcome.output = Request::read(output);
        return status;
      });
}

InstancesOutcome Provider::associators(
    const ObjectPath& path, const AssociationFilter& filter, const PropertyList& properties,
    const CallOptions* options) {
  NameList names(properties);
  return onPath<InstancesOutcome>(
      m_broker, optionsOr(options), m_associationMI, {"associators", true}, &CMPIAssociationMIFT::associators,
      path, orNull(filter.associationClass), orNull(filter.resultClass), orNull(filter.role),
      orNull(filter.resultRole), names.get());
}

PathsOutcome Provider::associatorNames(
    const ObjectPath& path, const AssociationFilter& filter, const CallOptions* options) {
  return onPath<PathsOutcome>(
      m_broker, optionsOr(options), m_associationMI, {"associatorNames", false},
      &CMPIAssociationMIFT::associatorNames, path, orNull(filter.associationClass),
      orNull(filter.resultClass), orNull(filter.role), orNull(filter.resultRole));
}

InstancesOutcome Provider::references(
    const ObjectPath& path, const AssociationFilter& filter, const PropertyList& properties,
    const CallOptions* options) {
  NameList names(properties);
  return onPath<InstancesOutcome>(
      m_broker, optionsOr(options), m_associationMI, {"references", true}, &CMPIAssociationMIFT::references,
      path, orNull(filter.resultClass), orNull(filter.role), names.get());
}

PathsOutcome Provider::referenceNames(
    const ObjectPath& path, const AssociationFilter& filter, const CallOptions* options) {
  return onPath<PathsOutcome>(
      m_broker, optionsOr(options), m_associationMI, {"referenceNames", true},
      &CMPIAssociationMIFT::referenceNames, path, orNull(filter.resultClass), orNull(filter.role));
}

Outcome Provider::authorizeFilter(const IndicationFilter& filter, const CallOptions* options) {
  const bool nobody =
      m_broker.options().manager == ObjectManager::Sfcb && !optionsOr(options).principal.has_value();
  return onFilter(
      m_broker, optionsOr(options), m_indicationMI, "authorizeFilter", &CMPIIndicationMIFT::authorizeFilter,
      filter, nobody ? nullptr : filter.owner.c_str());
}

Outcome Provider::mustPoll(const IndicationFilter& filter, const CallOptions* options) {
  return onFilter(
      m_broker, optionsOr(options), m_indicationMI, "mustPoll", &CMPIIndicationMIFT::mustPoll, filter);
}

Outcome
Provider::activateFilter(const IndicationFilter& filter, bool firstActivation, const CallOptions* options) {
  return onFilter(
      m_broker, optionsOr(options), m_indicationMI, "activateFilter", &CMPIIndicationMIFT::activateFilter,
      filter, static_cast<CMPIBoolean>(firstActivation));
}

Outcome
Provider::deActivateFilter(const IndicationFilter& filter, bool lastActivation, const CallOptions* options) {
  return onFilter(
      m_broker, optionsOr(options), m_indicationMI, "deActivateFilter", &CMPIIndicationMIFT::deActivateFilter,
      filter, static_cast<CMPIBoolean>(lastActivation));
}

Outcome Provider::enableIndications(const CallOptions* options) {
  return call<Outcome>(
      m_broker, optionsOr(options), m_indicationMI, {"enableIndications", false},
      [&](Request& request, Outcome&) {
        return m_indicationMI->ft->enableIndications(m_indicationMI, request.context());
      });
}

Outcome Provider::disableIndications(const CallOptions* options) {
  return call<Outcome>(
      m_broker, optionsOr(options), m_indicationMI, {"disableIndications", false},
      [&](Request& request, Outcome&) {
        return m_indicationMI->ft->disableIndications(m_indicationMI, request.context());
      });
}

Outcome Provider::cleanup(bool terminating) {
  Outcome first;
  if (m_broker.options().manager == ObjectManager::Sfcb) {
    std::thread other([&] { static_cast<void>(cleanupInterfaces(terminating)); });
    first = cleanupInterfaces(terminating);
    other.join();
  } else {
    first = cleanupInterfaces(terminating);
  }
  m_cleanedUp = terminating && first.ok();
  return first;
}

Outcome Provider::cleanupInterfaces(bool terminating) {
  Outcome first;
  const auto clean = [&](auto* interface) {
    if (interface == nullptr) {
      return;
    }
    const Outcome outcome =
        call<Outcome>(m_broker, m_defaults, interface, {"cleanup", false}, [&](Request& request, Outcome&) {
          return interface->ft->cleanup(interface, request.context(), terminating ? 1 : 0);
        });
    if (first.ok()) {
      first = outcome;
    }
  };
  clean(m_instanceMI);
  clean(m_methodMI);
  clean(m_associationMI);
  clean(m_indicationMI);
  return first;
}

}  // namespace tvp::host
