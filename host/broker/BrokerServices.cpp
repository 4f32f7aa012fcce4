// SPDX-License-Identifier: Apache-2.0
#include "host/broker/Conversion.h"
#include "host/broker/EntryPoint.h"

namespace tvp::host {
namespace {

/** Object managers list what they can do as bits; these are the standard's numbers. */
constexpr unsigned int CAPABILITIES = 0x01 | 0x02 | 0x04 | 0x08 | 0x10 | 0x40 | 0x80 | 0x100;

CMPIContext* prepareAttachThread(const CMPIBroker* broker, const CMPIContext* context) {
  static constexpr const char* FUNCTION = "CMPIBroker.prepareAttachThread";
  return brokerValueCall<CMPIContext*>(
      broker, FUNCTION, nullptr,
      [=](BrokerState& state, CMPIrc&) -> CMPIContext* {
        Object<CMPIContext>* request = livingObject(context, FUNCTION);
        const auto handlers = state.handlers();
        if (request == nullptr || (handlers->onPrepareAttachThread && !handlers->onPrepareAttachThread())) {
          return nullptr;
        }
        ContextContent content = request->content();
        content.prepared = true;
        return state.makeIn<CMPIContext>(state.lastingScope(), std::move(content));
      },
      false);
}

/** The shape of attaching and detaching: the context must be one that was prepared for a thread. */
template <class Body>
CMPIStatus
withPreparedContext(const CMPIBroker* broker, const CMPIContext* context, const char* function, Body body) {
  return brokerStatusCall(
      broker, function,
      [=](BrokerState& state) -> CMPIrc {
        Object<CMPIContext>* prepared = livingObject(context, function);
        if (prepared == nullptr) {
          return CMPI_RC_ERR_INVALID_HANDLE;
        }
        return prepared->content().prepared ? body(state) : CMPI_RC_ERR_INVALID_PARAMETER;
      },
      false);
}

CMPIStatus attachThread(const CMPIBroker* broker, const CMPIContext* context) {
  return withPreparedContext(broker, context, "CMPIBroker.attachThread", [](BrokerState& state) {
    const auto handlers = state.handlers();
    const CMPIrc code = handlers->onAttachThread ? handlers->onAttachThread() : CMPI_RC_OK;
    if (code == CMPI_RC_OK) {
      state.attachThread();
    }
    return code;
  });
}

CMPIStatus detachThread(const CMPIBroker* broker, const CMPIContext* context) {
  return withPreparedContext(broker, context, "CMPIBroker.detachThread", [](BrokerState& state) {
    state.detachThread();
    return CMPI_RC_OK;
  });
}

CMPIStatus deliverIndication(
    const CMPIBroker* broker, const CMPIContext* context, const char* nameSpace,
    const CMPIInstance* indication) {
  static constexpr const char* FUNCTION = "CMPIBroker.deliverIndication";
  return brokerStatusCall(broker, FUNCTION, [=](BrokerState& state) -> CMPIrc {
    Object<CMPIInstance>* delivered = livingObject(indication, FUNCTION);
    if (delivered == nullptr || livingObject(context, FUNCTION) == nullptr) {
      return CMPI_RC_ERR_INVALID_HANDLE;
    }
    const auto handlers = state.handlers();
    return handlers->onIndication ? handlers->onIndication(textOf(nameSpace), delivered->content().snapshot())
                                  : CMPI_RC_OK;
  });
}

bool answersList(const std::string& operation) {
  return operation.compare(0, 9, "enumerate") == 0 || operation.compare(0, 9, "associato") == 0 ||
         operation.compare(0, 9, "reference") == 0 || operation == "execQuery";
}

/** Asks the host; without a handler lists are empty and the rest is not supported. */
UpcallAnswer answer(BrokerState& state, const Upcall& upcall) {
  const auto handlers = state.handlers();
  if (handlers->onUpcall) {
    return handlers->onUpcall(upcall);
  }
  UpcallAnswer none;
  none.rc = answersList(upcall.operation) ? CMPI_RC_OK : CMPI_RC_ERR_NOT_SUPPORTED;
  return none;
}

/** Fills an upcall from what every one is given. @return CMPI_RC_OK or CMPI_RC_ERR_INVALID_HANDLE */
CMPIrc
begin(Upcall& upcall, const std::string& function, const CMPIContext* context, const CMPIObjectPath* path) {
  Object<CMPIObjectPath>* target = livingObject(path, function.c_str());
  if (livingObject(context, function.c_str()) == nullptr || target == nullptr) {
    return CMPI_RC_ERR_INVALID_HANDLE;
  }
  upcall.operation = function.substr(function.find('.') + 1);
  upcall.path = target->content();
  return CMPI_RC_OK;
}

/** The shape of an upcall: begin, ask, and turn what came into the result. */
template <class Result, class Convert>
Result upcall(
    const CMPIBroker* broker, const char* function, const CMPIContext* context, const CMPIObjectPath* path,
    CMPIStatus* status, Upcall given, Convert convert) {
  return brokerValueCall<Result>(broker, function, status, [&](BrokerState& state, CMPIrc& code) -> Result {
    code = begin(given, function, context, path);
    if (code != CMPI_RC_OK) {
      return failedResult<Result>();
    }
    const UpcallAnswer answered = answer(state, given);
    code = answered.rc;
    return code == CMPI_RC_OK ? convert(state, answered) : failedResult<Result>();
  });
}

CMPIEnumeration* listUpcall(
    const CMPIBroker* broker, const char* function, const CMPIContext* context, const CMPIObjectPath* path,
    CMPIStatus* status, Upcall given = {}) {
  return upcall<CMPIEnumeration*>(
      broker, function, context, path, status, std::move(given),
      [](BrokerState& state, const UpcallAnswer& answered) {
        return state.make<CMPIEnumeration>(EnumerationContent{answered.values, 0});
      });
}

CMPIData valueUpcall(
    const CMPIBroker* broker, const char* function, const CMPIContext* context, const CMPIObjectPath* path,
    CMPIStatus* status, Upcall given, CMPIArgs* output = nullptr) {
  return upcall<CMPIData>(
      broker, function, context, path, status, std::move(given),
      [&](BrokerState& state, const UpcallAnswer& answered) {
        if (Object<CMPIArgs>* list = livingObject(output, function)) {
          list->content().arguments = answered.output;
        }
        return answered.values.empty() ? noData(CMPI_nullValue) : toCmpi(state, answered.values.front());
      });
}

CMPIEnumeration* enumerateInstanceNames(
    const CMPIBroker* broker, const CMPIContext* context, const CMPIObjectPath* path, CMPIStatus* status) {
  return listUpcall(broker, "CMPIBroker.enumerateInstanceNames", context, path, status);
}

CMPIInstance* getInstance(
    const CMPIBroker* broker, const CMPIContext* context, const CMPIObjectPath* path, const char**,
    CMPIStatus* status) {
  return valueUpcall(broker, "CMPIBroker.getInstance", context, path, status, {}).value.inst;
}

/** An upcall that carries an instance. */
Upcall withInstance(const CMPIInstance* instance, const char* function) {
  Upcall given;
  if (Object<CMPIInstance>* object = livingObject(instance, function)) {
    given.instance = object->content().snapshot();
  }
  return given;
}

CMPIObjectPath* createInstance(
    const CMPIBroker* broker, const CMPIContext* context, const CMPIObjectPath* path,
    const CMPIInstance* instance, CMPIStatus* status) {
  static constexpr const char* FUNCTION = "CMPIBroker.createInstance";
  return valueUpcall(broker, FUNCTION, context, path, status, withInstance(instance, FUNCTION)).value.ref;
}

/** An upcall that answers a status alone. */
CMPIStatus statusUpcall(
    const CMPIBroker* broker, const char* function, const CMPIContext* context, const CMPIObjectPath* path,
    Upcall given) {
  CMPIStatus status{};
  valueUpcall(broker, function, context, path, &status, std::move(given));
  return status;
}

CMPIStatus modifyInstance(
    const CMPIBroker* broker, const CMPIContext* context, const CMPIObjectPath* path,
    const CMPIInstance* instance, const char**) {
  static constexpr const char* FUNCTION = "CMPIBroker.modifyInstance";
  return statusUpcall(broker, FUNCTION, context, path, withInstance(instance, FUNCTION));
}

CMPIStatus deleteInstance(const CMPIBroker* broker, const CMPIContext* context, const CMPIObjectPath* path) {
  return statusUpcall(broker, "CMPIBroker.deleteInstance", context, path, {});
}

/** An upcall that names something: a query, a method, a property, an association class. */
Upcall named(const char* name) {
  Upcall given;
  given.name = textOf(name);
  return given;
}

CMPIEnumeration* execQuery(
    const CMPIBroker* broker, const CMPIContext* context, const CMPIObjectPath* path, const char* query,
    const char*, CMPIStatus* status) {
  return listUpcall(broker, "CMPIBroker.execQuery", context, path, status, named(query));
}

CMPIEnumeration* enumerateInstances(
    const CMPIBroker* broker, const CMPIContext* context, const CMPIObjectPath* path, const char**,
    CMPIStatus* status) {
  return listUpcall(broker, "CMPIBroker.enumerateInstances", context, path, status);
}

CMPIEnumeration* associators(
    const CMPIBroker* broker, const CMPIContext* context, const CMPIObjectPath* path,
    const char* associationClass, const char*, const char*, const char*, const char**, CMPIStatus* status) {
  return listUpcall(broker, "CMPIBroker.associators", context, path, status, named(associationClass));
}

CMPIEnumeration* associatorNames(
    const CMPIBroker* broker, const CMPIContext* context, const CMPIObjectPath* path,
    const char* associationClass, const char*, const char*, const char*, CMPIStatus* status) {
  return listUpcall(broker, "CMPIBroker.associatorNames", context, path, status, named(associationClass));
}

CMPIEnumeration* references(
    const CMPIBroker* broker, const CMPIContext* context, const CMPIObjectPath* path, const char* resultClass,
    const char*, const char**, CMPIStatus* status) {
  return listUpcall(broker, "CMPIBroker.references", context, path, status, named(resultClass));
}

CMPIEnumeration* referenceNames(
    const CMPIBroker* broker, const CMPIContext* context, const CMPIObjectPath* path, const char* resultClass,
    const char*, CMPIStatus* status) {
  return listUpcall(broker, "CMPIBroker.referenceNames", context, path, status, named(resultClass));
}

CMPIData invokeMethod(
    const CMPIBroker* broker, const CMPIContext* context, const CMPIObjectPath* path, const char* method,
    const CMPIArgs* input, CMPIArgs* output, CMPIStatus* status) {
  static constexpr const char* FUNCTION = "CMPIBroker.invokeMethod";
  Upcall given = named(method);
  if (Object<CMPIArgs>* list = livingObject(input, FUNCTION)) {
    given.input = list->content().arguments;
  }
  return valueUpcall(broker, FUNCTION, context, path, status, std::move(given), output);
}

CMPIStatus setProperty(
    const CMPIBroker* broker, const CMPIContext* context, const CMPIObjectPath* path, const char* name,
    const CMPIValue* value, CMPIType type) {
  Upcall given = named(name);
  Value copied;
  const CMPIrc code = guarded([&] { return fromCmpi(value, type, copied); });
  if (code != CMPI_RC_OK) {
    return CMPIStatus{code, nullptr};
  }
  given.input.add(given.name, std::move(copied));
  return statusUpcall(broker, "CMPIBroker.setProperty", context, path, std::move(given));
}

CMPIData getProperty(
    const CMPIBroker* broker, const CMPIContext* context, const CMPIObjectPath* path, const char* name,
    CMPIStatus* status) {
  return valueUpcall(broker, "CMPIBroker.getProperty", context, path, status, named(name));
}

}  // namespace

CMPIBrokerFT* brokerServiceTable() {
  static CMPIBrokerFT table = {CAPABILITIES, CMPIVersion200,     "tvp host",        prepareAttachThread,
                               attachThread, detachThread,       deliverIndication, enumerateInstanceNames,
                               getInstance,  createInstance,     modifyInstance,    deleteInstance,
                               execQuery,    enumerateInstances, associators,       associatorNames,
                               references,   referenceNames,     invokeMethod,      setProperty,
                               getProperty};
  return &table;
}

}  // namespace tvp::host
