// SPDX-License-Identifier: Apache-2.0
#include "host/broker/Conversion.h"

namespace tvp::host {
namespace {

/** Object managers report their capabilities as bits; these are the standard's numbers. */
constexpr unsigned int CAPABILITIES = 0x01 | 0x02 | 0x04 | 0x08 | 0x10 | 0x40 | 0x80 | 0x100;

CMPIContext* prepareAttachThread(Broker& broker, Call& call, const CMPIContext* context) {
  Object<CMPIContext>* request = livingObject(context, call.function());
  const auto handlers = broker.handlers();
  if (request == nullptr || (handlers->onPrepareAttachThread && !handlers->onPrepareAttachThread())) {
    return nullptr;
  }
  ContextContent content = request->content();
  content.prepared = true;
  return broker.lastingScope().make<CMPIContext>(std::move(content));
}

/** Attaching and detaching require a context that was prepared for a thread. */
void requirePrepared(const Call& call, const CMPIContext* context) {
  if (!call.contentOf(context).prepared) {
    throw CallFailure{CMPI_RC_ERR_INVALID_PARAMETER};
  }
}

void requireOk(CMPIrc code) {
  if (code != CMPI_RC_OK) {
    throw CallFailure{code};
  }
}

void attachThread(Broker& broker, Call& call, const CMPIContext* context) {
  requirePrepared(call, context);
  const auto handlers = broker.handlers();
  requireOk(handlers->onAttachThread ? handlers->onAttachThread() : CMPI_RC_OK);
  broker.attachThread();
}

void detachThread(Broker& broker, Call& call, const CMPIContext* context) {
  requirePrepared(call, context);
  broker.detachThread();
}

void deliverIndication(
    Broker& broker, Call& call, const CMPIContext* context, const char* nameSpace,
    const CMPIInstance* indication) {
  const InstanceContent& delivered = call.contentOf(indication);
  call.contentOf(context);
  const auto handlers = broker.handlers();
  if (broker.options().manager == ObjectManager::Sfcb) {
    call.makeString("a string of the object manager's own");  // no provider sees it, or could release it
  }
  if (handlers->onIndication) {
    requireOk(handlers->onIndication(textOf(nameSpace), delivered.snapshot()));
  }
}

/** The host's result; without a handler, lists are empty and everything else is not supported. */
UpcallAnswer
ask(Call& call, const CMPIContext* context, const CMPIObjectPath* path, Upcall upcall, bool isList) {
  upcall.path = call.contentOf(path);
  call.contentOf(context);
  const std::string function = call.function();
  upcall.operation = function.substr(function.find('.') + 1);
  const auto handlers = call.broker().handlers();
  UpcallAnswer answer;
  if (handlers->onUpcall) {
    answer = handlers->onUpcall(upcall);
  } else if (isList) {
    answer.rc = CMPI_RC_OK;
  }
  return answer.rc == CMPI_RC_OK ? answer : throw CallFailure{answer.rc, answer.message};
}

CMPIEnumeration*
askForList(Call& call, const CMPIContext* context, const CMPIObjectPath* path, Upcall upcall = {}) {
  return call.make<CMPIEnumeration>({ask(call, context, path, std::move(upcall), true).values, 0});
}

CMPIData askForValue(
    Call& call, const CMPIContext* context, const CMPIObjectPath* path, Upcall upcall,
    CMPIArgs* output = nullptr) {
  const UpcallAnswer answer = ask(call, context, path, std::move(upcall), false);
  if (Object<CMPIArgs>* list = livingObject(output, call.function())) {
    list->content().arguments = answer.output;
  }
  if (answer.values.empty()) {
    CMPIData none{};
    none.state = CMPI_nullValue;
    return none;
  }
  return toCmpi(call, answer.values.front());
}

/** An upcall that carries an instance. */
Upcall withInstance(const Call& call, const CMPIInstance* instance) {
  Upcall upcall;
  if (Object<CMPIInstance>* object = livingObject(instance, call.function())) {
    upcall.instance = object->content().snapshot();
  }
  return upcall;
}

/** An upcall that names something: a query, a method, a property, an association class. */
Upcall named(const char* name) {
  Upcall upcall;
  upcall.name = textOf(name);
  return upcall;
}

/** The enumerations take the context, the path and, in some cases, a list of properties. */
template <class... Properties>
CMPIEnumeration*
enumerate(Broker&, Call& call, const CMPIContext* context, const CMPIObjectPath* path, Properties...) {
  return askForList(call, context, path);
}

/**
 * Queries and associations pass the query or the association class first; the rest is meant for the provider.
 */
template <class... More>
CMPIEnumeration* enumerateNamed(
    Broker&, Call& call, const CMPIContext* context, const CMPIObjectPath* path, const char* name, More...) {
  return askForList(call, context, path, named(name));
}

CMPIData invokeMethod(
    Broker&, Call& call, const CMPIContext* context, const CMPIObjectPath* path, const char* method,
    const CMPIArgs* input, CMPIArgs* output) {
  Upcall upcall = named(method);
  if (Object<CMPIArgs>* list = livingObject(input, call.function())) {
    upcall.input = list->content().arguments;
  }
  return askForValue(call, context, path, std::move(upcall), output);
}

void setProperty(
    Broker&, Call& call, const CMPIContext* context, const CMPIObjectPath* path, const char* name,
    const CMPIValue* value, CMPIType type) {
  Upcall upcall = named(name);
  upcall.input.add(upcall.name, fromCmpi(call, value, type));
  askForValue(call, context, path, std::move(upcall));
}

CMPIBrokerFT makeTable(const char* brokerName) {
  using FT = CMPIBrokerFT;
  using Context = const CMPIContext*;
  using Path = const CMPIObjectPath*;
  FT table{};
  table.brokerCapabilities = CAPABILITIES;
  table.brokerVersion = CMPIVersion200;
  table.brokerName = brokerName;
  bind<&FT::prepareAttachThread>(table, "prepareAttachThread", prepareAttachThread, Thread::Any);
  bind<&FT::attachThread>(table, "attachThread", attachThread, Thread::Any);
  bind<&FT::detachThread>(table, "detachThread", detachThread, Thread::Any);
  bind<&FT::deliverIndication>(table, "deliverIndication", deliverIndication);
  bind<&FT::enumerateInstanceNames>(table, "enumerateInstanceNames", enumerate<>);
  bind<&FT::enumerateInstances>(table, "enumerateInstances", enumerate<const char**>);
  bind<&FT::execQuery>(table, "execQuery", enumerateNamed<const char*>);
  bind<&FT::associators>(
      table, "associators", enumerateNamed<const char*, const char*, const char*, const char**>);
  bind<&FT::associatorNames>(table, "associatorNames", enumerateNamed<const char*, const char*, const char*>);
  bind<&FT::references>(table, "references", enumerateNamed<const char*, const char**>);
  bind<&FT::referenceNames>(table, "referenceNames", enumerateNamed<const char*>);
  bind<&FT::getInstance>(
      table, "getInstance", [](Broker&, Call& call, Context context, Path path, const char**) {
        return askForValue(call, context, path, {}).value.inst;
      });
  bind<&FT::createInstance>(
      table, "createInstance",
      [](Broker&, Call& call, Context context, Path path, const CMPIInstance* instance) {
        return askForValue(call, context, path, withInstance(call, instance)).value.ref;
      });
  bind<&FT::modifyInstance>(
      table, "modifyInstance",
      [](Broker&, Call& call, Context context, Path path, const CMPIInstance* instance, const char**) {
        askForValue(call, context, path, withInstance(call, instance));
      });
  bind<&FT::deleteInstance>(table, "deleteInstance", [](Broker&, Call& call, Context context, Path path) {
    askForValue(call, context, path, {});
  });
  bind<&FT::invokeMethod>(table, "invokeMethod", invokeMethod);
  bind<&FT::setProperty>(table, "setProperty", setProperty);
  bind<&FT::getProperty>(
      table, "getProperty", [](Broker&, Call& call, Context context, Path path, const char* name) {
        return askForValue(call, context, path, named(name));
      });
  return table;
}

}  // namespace

CMPIBrokerFT* brokerServiceTable(ObjectManager manager) {
  static CMPIBrokerFT tables[] = {
      makeTable("tvp host"), makeTable("Pegasus"), makeTable("RequestHandler")};  // as ObjectManager
  return &tables[static_cast<std::size_t>(manager)];
}

}  // namespace tvp::host
