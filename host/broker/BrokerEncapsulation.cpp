// SPDX-License-Identifier: Apache-2.0
#include "host/broker/Conversion.h"
#include "host/schema/Names.h"
#include "host/schema/ObjectPathText.h"

#include <cstdarg>

namespace tvp::host {
namespace {

CMPIInstance* newInstance(Broker& broker, Call& call, const CMPIObjectPath* path) {
  const ObjectPath& given = call.contentOf(path);
  InstanceContent content;
  content.schemaClass = broker.schema().find(given.className);
  if (content.schemaClass == nullptr) {
    throw CallFailure{CMPI_RC_ERR_INVALID_CLASS};
  }
  content.instance = broker.schema().emptyInstance(given);
  return call.make<CMPIInstance>(std::move(content));
}

/** The types that the elements of an array can have. */
bool canBeElement(CMPIType type) {
  switch (type) {
  case CMPI_ref:
  case CMPI_instance:
  case CMPI_chars:
    return true;
  default:
    return typeOfName(typeName(type)).has_value();
  }
}

CMPIArray* newArray(Broker&, Call& call, CMPICount size, CMPIType type) {
  // COMPAT: providers that name the array's type instead of its elements'; object managers accept both.
  CMPIType elementType = static_cast<CMPIType>(type & ~CMPI_ARRAY);
  if (!canBeElement(elementType)) {
    throw CallFailure{CMPI_RC_ERR_INVALID_DATA_TYPE};
  }
  elementType = elementType == CMPI_chars ? static_cast<CMPIType>(CMPI_string) : elementType;
  return call.make<CMPIArray>({elementType, Value::List(size, Value::null(elementType))});
}

CMPIDateTime* newDateTimeFromBinary(Broker&, Call& call, CMPIUint64 microseconds, CMPIBoolean interval) {
  if (microseconds > (interval != 0 ? DateTime::LONGEST_INTERVAL : DateTime::LAST_TIME)) {
    throw CallFailure{CMPI_RC_ERR_INVALID_PARAMETER};
  }
  return call.make<CMPIDateTime>(DateTime::fromMicroseconds(microseconds, interval != 0));
}

CMPIDateTime* newDateTimeFromChars(Broker&, Call& call, const char* text) {
  const std::optional<DateTime> parsed = DateTime::parse(textOf(text));
  return parsed ? call.make<CMPIDateTime>(*parsed) : throw CallFailure{CMPI_RC_ERR_INVALID_PARAMETER};
}

CMPISelectExp*
newSelectExp(Broker&, Call& call, const char* query, const char* language, CMPIArray** projection) {
  SelectExpContent content{required(query), required(language)};
  if (projection != nullptr) {
    *projection = nullptr;
  }
  return call.make<CMPISelectExp>(std::move(content));
}

CMPIError* newError(
    Broker&, Call& call, const char* owner, const char* messageId, const char* message,
    CMPIErrorSeverity severity, CMPIErrorProbableCause cause, CMPIrc statusCode) {
  ErrorContent content;
  content.owner = textOf(owner);
  content.messageId = textOf(messageId);
  content.message = textOf(message);
  content.severity = severity;
  content.cause = cause;
  content.statusCode = statusCode;
  return call.make<CMPIError>(std::move(content));
}

/** The live object behind a face of any type. @throws CallFailure CMPI_RC_ERR_INVALID_HANDLE */
ObjectCore& anyObject(const Call& call, const void* face) {
  ObjectCore* core = ObjectCore::of(face);
  if (core != nullptr && core->isAlive()) {
    return *core;
  }
  if (core != nullptr) {
    call.broker().addLateUse(*core, call.function());
  }
  throw CallFailure{CMPI_RC_ERR_INVALID_HANDLE};
}

std::string textOfObject(const Call& call, const void* face) {
  ObjectCore& core = anyObject(call, face);
  if (auto* string = dynamic_cast<Object<CMPIString>*>(&core)) {
    return string->content().text.value_or("");
  }
  if (auto* path = dynamic_cast<Object<CMPIObjectPath>*>(&core)) {
    return toPathText(path->content());
  }
  if (auto* instance = dynamic_cast<Object<CMPIInstance>*>(&core)) {
    return Value::instance(instance->content().snapshot()).toText();
  }
  if (auto* dateTime = dynamic_cast<Object<CMPIDateTime>*>(&core)) {
    return dateTime->content().text();
  }
  if (auto* array = dynamic_cast<Object<CMPIArray>*>(&core)) {
    return Value::array(array->content().elementType, array->content().elements).toText();
  }
  return core.describe();
}

/** One insert of a message: its type, then its value. */
std::string nextInsert(const Call& call, va_list& inserts) {
  switch (va_arg(inserts, int)) {
  case CMPI_sint32:
    return std::to_string(va_arg(inserts, int));
  case CMPI_uint32:
    return std::to_string(va_arg(inserts, unsigned int));
  case CMPI_sint64:
    return std::to_string(va_arg(inserts, long long));
  case CMPI_uint64:
    return std::to_string(va_arg(inserts, unsigned long long));
  case CMPI_real64:
    return Value::real(CMPI_real64, va_arg(inserts, double)).toText();
  case CMPI_boolean:
    return va_arg(inserts, int) != 0 ? "true" : "false";
  case CMPI_chars:
    return textOf(va_arg(inserts, const char*));
  case CMPI_string: {
    Object<CMPIString>* text = livingObject(va_arg(inserts, CMPIString*), call.function());
    return text == nullptr ? std::string() : text->content().text.value_or("");
  }
  default:
    va_arg(inserts, void*);
    return "";
  }
}

/** Substitutes the inserts for $0 to $9. */
std::string formatMessage(const Call& call, const char* message, CMPICount count, va_list& inserts) {
  std::vector<std::string> texts;
  for (CMPICount i = 0; i < count; ++i) {
    texts.push_back(nextInsert(call, inserts));
  }
  std::string result;
  for (const char* letter = message; *letter != '\0'; ++letter) {
    const bool place = *letter == '$' && letter[1] >= '0' && letter[1] <= '9';
    const std::size_t number = place ? static_cast<std::size_t>(letter[1] - '0') : texts.size();
    if (number < texts.size()) {
      result += texts[number];
      ++letter;
    } else {
      result += *letter;
    }
  }
  return result;
}

/** There are no translations, so every message is the default one. */
CMPIString* makeMessage(
    const CMPIBroker* broker, const char* function, const char* message, CMPIStatus* status, CMPICount count,
    va_list& inserts) {
  CMPIString* result = nullptr;
  const CMPIStatus outcome = guarded(broker, function, Thread::Attached, [&](Broker&, Call& call) {
    result = call.makeString(formatMessage(call, textOf(message).c_str(), count, inserts));
  });
  if (status != nullptr) {
    *status = outcome;
  }
  return result;
}

CMPIString* getMessage(
    const CMPIBroker* broker, const char*, const char* message, CMPIStatus* status, CMPICount count, ...) {
  va_list inserts;
  va_start(inserts, count);
  CMPIString* result = makeMessage(broker, "CMPIBroker.getMessage", message, status, count, inserts);
  va_end(inserts);
  return result;
}

CMPIString* getMessage2(
    const CMPIBroker* broker, const char*, const CMPIMsgFileHandle, const char* message, CMPIStatus* status,
    CMPICount count, ...) {
  va_list inserts;
  va_start(inserts, count);
  CMPIString* result = makeMessage(broker, "CMPIBroker.getMessage2", message, status, count, inserts);
  va_end(inserts);
  return result;
}

/**
 * Logging and tracing go to the same handler; what is logged is also recorded as a remark of the current
 * request.
 */
template <bool isRemark>
void writeLog(
    Broker& broker, Call& call, int severity, const char* id, const char* text, const CMPIString* string) {
  Object<CMPIString>* object = livingObject(string, call.function());
  const std::string complete = object == nullptr ? textOf(text) : object->content().text.value_or("");
  if (isRemark && broker.scope().kind() == Scope::Kind::Request) {
    broker.scope().addRemark(complete);
  }
  const auto handlers = broker.handlers();
  if (handlers->onLog) {
    handlers->onLog(severity, textOf(id), complete);
  }
}

CMPIBrokerEncFT makeTable() {
  using FT = CMPIBrokerEncFT;
  FT table{};
  table.ftVersion = CMPIVersion200;
  bind<&FT::newInstance>(table, "newInstance", newInstance);
  bind<&FT::newObjectPath>(
      table, "newObjectPath", [](Broker&, Call& call, const char* nameSpace, const char* className) {
        return call.make<CMPIObjectPath>({textOf(nameSpace), required(className), {}, {}});
      });
  bind<&FT::newArgs>(table, "newArgs", [](Broker&, Call& call) { return call.make<CMPIArgs>({}); });
  bind<&FT::newString>(table, "newString", [](Broker&, Call& call, const char* text) {
    return call.makeString(required(text));
  });
  bind<&FT::newArray>(table, "newArray", newArray);
  bind<&FT::newDateTime>(
      table, "newDateTime", [](Broker&, Call& call) { return call.make<CMPIDateTime>(DateTime::now()); });
  bind<&FT::newDateTimeFromBinary>(table, "newDateTimeFromBinary", newDateTimeFromBinary);
  bind<&FT::newDateTimeFromChars>(table, "newDateTimeFromChars", newDateTimeFromChars);
  bind<&FT::newSelectExp>(table, "newSelectExp", newSelectExp);
  bind<&FT::classPathIsA>(
      table, "classPathIsA",
      [](Broker& broker, Call& call, const CMPIObjectPath* path, const char* className) {
        const std::string& given = call.contentOf(path).className;
        return static_cast<CMPIBoolean>(broker.schema().isA(given, required(className)));
      });
  bind<&FT::toString>(table, "toString", [](Broker&, Call& call, const void* object) {
    return call.makeString(textOfObject(call, object));
  });
  bind<&FT::isOfType>(table, "isOfType", [](Broker&, Call& call, const void* object, const char* type) {
    return static_cast<CMPIBoolean>(textOf(type) == anyObject(call, object).typeName());
  });
  bind<&FT::getType>(table, "getType", [](Broker&, Call& call, const void* object) {
    return call.makeString(anyObject(call, object).typeName());
  });
  table.getMessage = getMessage;
  bind<&FT::logMessage>(table, "logMessage", writeLog<true>);
  bind<&FT::trace>(table, "trace", writeLog<false>);
  bind<&FT::newCMPIError>(table, "newCMPIError", newError);
  bind<&FT::openMessageFile>(
      table, "openMessageFile",
      [](Broker&, Call&, const char*, CMPIMsgFileHandle* handle) { *required(handle) = nullptr; });
  bind<&FT::closeMessageFile>(table, "closeMessageFile", [](Broker&, Call&, CMPIMsgFileHandle) {});
  table.getMessage2 = getMessage2;
  return table;
}

}  // namespace

CMPIBrokerEncFT* brokerEncapsulationTable() {
  static CMPIBrokerEncFT table = makeTable();
  return &table;
}

}  // namespace tvp::host
