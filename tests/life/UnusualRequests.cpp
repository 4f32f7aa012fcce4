// SPDX-License-Identifier: Apache-2.0
#include "life/UnusualRequests.h"

#include "host/provider/Request.h"
#include "host/schema/Names.h"
#include "life/Requests.h"

namespace tvp::test {
namespace {

using host::NamedValue;
using host::Provider;
using host::Value;

/** A value of each scalar type. */
std::vector<NamedValue> everyScalar() {
  const host::ObjectPath path = classPath("TVP_LogicalDevices", {{"Number", Value::uint32(1)}});
  std::vector<NamedValue> values = {
      {"Flag", Value::boolean(true)},
      {"Text", Value::string("text")},
      {"When", Value::dateTime(host::DateTime())},
      {"Other", Value::reference(path)},
      {"Inside", Value::instance({path, {{"Number", Value::uint32(1)}}})}};
  for (const CMPIType type : {CMPI_uint8, CMPI_uint16, CMPI_uint32, CMPI_uint64, CMPI_char16}) {
    values.push_back({host::typeName(type), Value::unsignedInteger(type, 7)});
  }
  for (const CMPIType type : {CMPI_sint8, CMPI_sint16, CMPI_sint32, CMPI_sint64}) {
    values.push_back({host::typeName(type), Value::signedInteger(type, -7)});
  }
  for (const CMPIType type : {CMPI_real32, CMPI_real64}) {
    values.push_back({host::typeName(type), Value::real(type, 0.5)});
  }
  return values;
}

/** A value of each type: scalars, arrays, and those without a value. */
std::vector<NamedValue> everyValue() {
  std::vector<NamedValue> values = everyScalar();
  for (const NamedValue& scalar : everyScalar()) {
    const CMPIType type = scalar.value.type();
    values.push_back({scalar.name + "s", Value::array(type, {scalar.value, scalar.value})});
    values.push_back({"No" + scalar.name, Value::null(type)});
  }
  return values;
}

}  // namespace

void askWithoutArguments(Life& life) {
  const auto ask = [&life](const std::string& name, auto call) {
    life.step(name + " without arguments", [&](Provider& provider) {
      host::Request request(life.broker());
      const CMPIStatus status = call(provider);
      host::Outcome outcome;
      outcome.rc = status.rc;
      outcome.message = status.msg == nullptr ? "" : host::Request::read(status.msg);
      return outcome;
    });
  };
  ask("enumerateInstances", [](Provider& provider) {
    return provider.instanceMI()->ft->enumerateInstances(
        provider.instanceMI(), nullptr, nullptr, nullptr, nullptr);
  });
  ask("enumerateInstanceNames", [](Provider& provider) {
    return provider.instanceMI()->ft->enumerateInstanceNames(
        provider.instanceMI(), nullptr, nullptr, nullptr);
  });
  ask("getInstance", [](Provider& provider) {
    return provider.instanceMI()->ft->getInstance(provider.instanceMI(), nullptr, nullptr, nullptr, nullptr);
  });
  ask("createInstance", [](Provider& provider) {
    return provider.instanceMI()->ft->createInstance(
        provider.instanceMI(), nullptr, nullptr, nullptr, nullptr);
  });
  ask("modifyInstance", [](Provider& provider) {
    return provider.instanceMI()->ft->modifyInstance(
        provider.instanceMI(), nullptr, nullptr, nullptr, nullptr, nullptr);
  });
  ask("deleteInstance", [](Provider& provider) {
    return provider.instanceMI()->ft->deleteInstance(provider.instanceMI(), nullptr, nullptr, nullptr);
  });
  ask("execQuery", [](Provider& provider) {
    return provider.instanceMI()->ft->execQuery(
        provider.instanceMI(), nullptr, nullptr, nullptr, nullptr, nullptr);
  });
  ask("invokeMethod", [](Provider& provider) {
    return provider.methodMI()->ft->invokeMethod(
        provider.methodMI(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  });
  ask("associators", [](Provider& provider) {
    return provider.associationMI()->ft->associators(
        provider.associationMI(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  });
  ask("associatorNames", [](Provider& provider) {
    return provider.associationMI()->ft->associatorNames(
        provider.associationMI(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  });
  ask("references", [](Provider& provider) {
    return provider.associationMI()->ft->references(
        provider.associationMI(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  });
  ask("referenceNames", [](Provider& provider) {
    return provider.associationMI()->ft->referenceNames(
        provider.associationMI(), nullptr, nullptr, nullptr, nullptr, nullptr);
  });
  ask("authorizeFilter", [](Provider& provider) {
    return provider.indicationMI()->ft->authorizeFilter(
        provider.indicationMI(), nullptr, nullptr, nullptr, nullptr, nullptr);
  });
  ask("mustPoll", [](Provider& provider) {
    return provider.indicationMI()->ft->mustPoll(provider.indicationMI(), nullptr, nullptr, nullptr, nullptr);
  });
  ask("enableIndications", [](Provider& provider) {
    return provider.indicationMI()->ft->enableIndications(provider.indicationMI(), nullptr);
  });
  ask("disableIndications", [](Provider& provider) {
    return provider.indicationMI()->ft->disableIndications(provider.indicationMI(), nullptr);
  });
}

void askWithEveryType(Life& life) {
  const host::ObjectPath path = classPath("TVP_LogicalDevices");
  for (const NamedValue& key : everyScalar()) {
    life.step("getInstance with a key of type " + host::typeName(key.value.type()), [&](Provider& provider) {
      return provider.getInstance(classPath("TVP_LogicalDevices", {key}));
    });
  }
  for (const NamedValue& value : everyValue()) {
    const std::string of = " with a value " + value.name;
    life.step("modifyInstance" + of, [&](Provider& provider) {
      return provider.modifyInstance(path, {classPath("TVP_EveryType"), {value}}, {{value.name}});
    });
    life.step("invokeMethod" + of, [&](Provider& provider) {
      return provider.invokeMethod(classPath("TVP_NoSuchClass"), "Take", {{value}});
    });
  }
}

void askWhileCallsFail(Life& life) {
  life.failEachFunction([&](const std::string& addition) {
    life.step("getInstance" + addition, [](Provider& provider) {
      return provider.getInstance(classPath("TVP_LogicalDevices", {{"Number", Value::uint32(7)}}));
    });
  });
  life.failEachFunction(
      [&](const std::string& addition) { enumerate(life, "TVP_VirtualPoolMember", "an array" + addition); });
  life.failEachFunction([&](const std::string& addition) {
    invoke(life, ofPool("GetVirtualPoolMembers", 1), "embedded instances" + addition);
  });
  life.failEachFunction([&](const std::string& addition) {
    life.step("modifyInstance" + addition, [](Provider& provider) {
      const NamedValue list{"List", Value::array(CMPI_uint32, {Value::uint32(1)})};
      const NamedValue text{"Text", Value::string("text")};
      return provider.modifyInstance(
          classPath("TVP_LogicalDevices"), {classPath("TVP_EveryType"), {list, text}});
    });
  });
  life.failEachFunction([&](const std::string& addition) {
    life.step("references" + addition, [](Provider& provider) {
      return provider.references(classPath("TVP_VirtualPool"), {"", "TVP_VirtualPool", "", ""});
    });
  });
  life.failEachFunction([&](const std::string& addition) {
    life.step("activateFilter" + addition, [](Provider& provider) {
      return provider.activateFilter(tieringFilter());
    });
  });
  life.step(
      "activateFilter again", [](Provider& provider) { return provider.activateFilter(tieringFilter()); });
}

}  // namespace tvp::test
