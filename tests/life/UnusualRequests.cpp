// SPDX-License-Identifier: Apache-2.0
#include "host/provider/Request.h"
#include "host/schema/Names.h"
#include "life/Requests.h"

namespace tvp::test {
namespace {

using host::NamedValue;
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

/** Calls a function of an interface, every other argument of which is null, as one step. */
template <typename Interface, typename... Argument>
void askWithNulls(
    Life& life, const std::string& name, CMPIStatus (*function)(Interface*, Argument...),
    Interface* interface) {
  life.step(name + " without arguments", [&] {
    const host::Request request(life.broker());
    const CMPIStatus status = function(interface, Argument()...);
    host::Outcome outcome;
    outcome.rc = status.rc;
    outcome.message = status.msg == nullptr ? "" : host::Request::read(status.msg);
    return outcome;
  });
}

}  // namespace

void askWithoutArguments(Life& life) {
  const auto askEach = [&life](auto* interface, auto... functions) {
    (askWithNulls(life, functions.first, interface->ft->*functions.second, interface), ...);
  };
  using Instances = CMPIInstanceMIFT;
  askEach(
      life.provider().instanceMI(), std::pair{"enumerateInstances", &Instances::enumerateInstances},
      std::pair{"enumerateInstanceNames", &Instances::enumerateInstanceNames},
      std::pair{"getInstance", &Instances::getInstance},
      std::pair{"createInstance", &Instances::createInstance},
      std::pair{"modifyInstance", &Instances::modifyInstance},
      std::pair{"deleteInstance", &Instances::deleteInstance}, std::pair{"execQuery", &Instances::execQuery});
  askEach(life.provider().methodMI(), std::pair{"invokeMethod", &CMPIMethodMIFT::invokeMethod});
  using Associations = CMPIAssociationMIFT;
  askEach(
      life.provider().associationMI(), std::pair{"associators", &Associations::associators},
      std::pair{"associatorNames", &Associations::associatorNames},
      std::pair{"references", &Associations::references},
      std::pair{"referenceNames", &Associations::referenceNames});
  using Indications = CMPIIndicationMIFT;
  askEach(
      life.provider().indicationMI(), std::pair{"authorizeFilter", &Indications::authorizeFilter},
      std::pair{"mustPoll", &Indications::mustPoll},
      std::pair{"enableIndications", &Indications::enableIndications},
      std::pair{"disableIndications", &Indications::disableIndications});
}

void askWithEveryType(Life& life) {
  const host::ObjectPath path = classPath("TVP_LogicalDevices");
  for (const NamedValue& key : everyScalar()) {
    life.step("getInstance with a key of type " + host::typeName(key.value.type()), [&] {
      return life.provider().getInstance(classPath("TVP_LogicalDevices", {key}));
    });
  }
  for (const NamedValue& value : everyValue()) {
    const std::string of = " with a value " + value.name;
    life.step("modifyInstance" + of, [&] {
      return life.provider().modifyInstance(path, {classPath("TVP_EveryType"), {value}}, {{value.name}});
    });
    life.step("invokeMethod" + of, [&] {
      return life.provider().invokeMethod(classPath("TVP_NoSuchClass"), "Take", {{value}});
    });
  }
}

void askWhileCallsFail(Life& life) {
  const auto failEach = [&life](const std::string& title, auto request) {
    life.failEachFunction([&](const std::string& addition) { life.step(title + addition, request); });
  };
  const auto activateFilter = [&] { return life.provider().activateFilter(tieringFilter()); };
  failEach("getInstance", [&] {
    return life.provider().getInstance(classPath("TVP_LogicalDevices", {{"Number", Value::uint32(7)}}));
  });
  life.failEachFunction(
      [&](const std::string& addition) { life.enumerate("TVP_VirtualPoolMember", "an array" + addition); });
  life.failEachFunction([&](const std::string& addition) {
    life.invoke(ofPool("GetVirtualPoolMembers", 1), "embedded instances" + addition);
  });
  failEach("modifyInstance", [&] {
    const NamedValue list{"List", Value::array(CMPI_uint32, {Value::uint32(1)})};
    const NamedValue text{"Text", Value::string("text")};
    return life.provider().modifyInstance(
        classPath("TVP_LogicalDevices"), {classPath("TVP_EveryType"), {list, text}});
  });
  failEach("references", [&] {
    return life.provider().references(classPath("TVP_VirtualPool"), {"", "TVP_VirtualPool", "", ""});
  });
  failEach("activateFilter", activateFilter);
  life.step("activateFilter again", activateFilter);
}

}  // namespace tvp::test
