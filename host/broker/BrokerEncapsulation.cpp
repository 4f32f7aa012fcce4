// SPDX-License-Identifier: Apache-2.0
#include "host/broker/Conversion.h"
#include "host/broker/EntryPoint.h"
#include "host/schema/Names.h"
#include "host/schema/ObjectPathText.h"

#include <cstdarg>

namespace tvp::host {
namespace {

CMPIInstance* newInstance(const CMPIBroker* broker, const CMPIObjectPath* path, CMPIStatus* status) {
  static constexpr const char* FUNCTION = "CMPIBroker.newInstance";
  return brokerValueCall<CMPIInstance*>(
      broker, FUNCTION, status, [=](BrokerState& state, CMPIrc& code) -> CMPIInstance* {
        Object<CMPIObjectPath>* given = livingObject(path, FUNCTION);
        if (given == nullptr) {
          code = CMPI_RC_ERR_INVALID_HANDLE;
          return nullptr;
        }
        InstanceContent content;
        content.schemaClass = state.schema()->find(given->content().className);
        if (content.schemaClass == nullptr) {
          code = CMPI_RC_ERR_INVALID_CLASS;
          return nullptr;
        }
        content.instance = state.schema()->emptyInstance(given->content());
        return state.make<CMPIInstance>(std::move(content));
      });
}

CMPIObjectPath*
newObjectPath(const CMPIBroker* broker, const char* nameSpace, const char* className, CMPIStatus* status) {
  return brokerValueCall<CMPIObjectPath*>(
      broker, "CMPIBroker.newObjectPath", status, [=](BrokerState& state, CMPIrc& code) -> CMPIObjectPath* {
        if (className == nullptr) {
          code = CMPI_RC_ERR_INVALID_PARAMETER;
          return nullptr;
        }
        ObjectPath path;
        path.nameSpace = textOf(nameSpace);
        path.className = className;
        return state.make<CMPIObjectPath>(std::move(path));
      });
}

CMPIArgs* newArgs(const CMPIBroker* broker, CMPIStatus* status) {
  return brokerValueCall<CMPIArgs*>(broker, "CMPIBroker.newArgs", status, [](BrokerState& state, CMPIrc&) {
    return state.make<CMPIArgs>(ArgsContent{});
  });
}

CMPIString* newString(const CMPIBroker* broker, const char* text, CMPIStatus* status) {
  return brokerValueCall<CMPIString*>(
      broker, "CMPIBroker.newString", status, [=](BrokerState& state, CMPIrc& code) -> CMPIString* {
        if (text == nullptr) {
          code = CMPI_RC_ERR_INVALID_PARAMETER;
          return nullptr;
        }
        return makeString(state, text);
      });
}

/** Types that the elements of an array can have. */
bool canBeElement(CMPIType type) {
  switch (type) {
  case CMPI_ref:
  case CMPI_instance:
  case CMPI_string:
  case CMPI_chars:
  case CMPI_dateTime:
    return true;
  default:
    return typeOfName(typeName(type)).has_value();
  }
}

CMPIArray* newArray(const CMPIBroker* broker, CMPICount size, CMPIType type, CMPIStatus* status) {
  return brokerValueCall<CMPIArray*>(
      broker, "CMPIBroker.newArray", status, [=](BrokerState& state, CMPIrc& code) -> CMPIArray* {
        // Some providers name the array's type instead of its elements'; object managers take both.
        CMPIType elementType = static_cast<CMPIType>(type & ~CMPI_ARRAY);
        if (!canBeElement(elementType)) {
          code = CMPI_RC_ERR_INVALID_DATA_TYPE;
          return nullptr;
        }
        elementType = elementType == CMPI_chars ? static_cast<CMPIType>(CMPI_string) : elementType;
        return state.make<CMPIArray>(ArrayContent{elementType, Value::List(size, Value::null(elementType))});
      });
}

CMPIDateTime* newDateTime(const CMPIBroker* broker, CMPIStatus* status) {
  return brokerValueCall<CMPIDateTime*>(
      broker, "CMPIBroker.newDateTime", status,
      [](BrokerState& state, CMPIrc&) { return state.make<CMPIDateTime>(DateTime::now()); });
}

CMPIDateTime* newDateTimeFromBinary(
    const CMPIBroker* broker, CMPIUint64 microseconds, CMPIBoolean interval, CMPIStatus* status) {
  return brokerValueCall<CMPIDateTime*>(
      broker, "CMPIBroker.newDateTimeFromBinary", status, [=](BrokerState& state, CMPIrc&) {
        return state.make<CMPIDateTime>(DateTime::fromMicroseconds(microseconds, interval != 0));
      });
}

CMPIDateTime* newDateTimeFromChars(const CMPIBroker* broker, const char* text, CMPIStatus* status) {
  return brokerValueCall<CMPIDateTime*>(
      broker, "CMPIBroker.newDateTimeFromChars", status,
      [=](BrokerState& state, CMPIrc& code) -> CMPIDateTime* {
        const std::optional<DateTime> parsed = DateTime::parse(textOf(text));
        if (!parsed) {
          code = CMPI_RC_ERR_INVALID_PARAMETER;
          return nullptr;
        }
        return state.make<CMPIDateTime>(*parsed);
      });
}

CMPISelectExp* newSelectExp(
    const CMPIBroker* broker, const char* query, const char* language, CMPIArray** projection,
    CMPIStatus* status) {
  return brokerValueCall<CMPISelectExp*>(
      broker, "CMPIBroker.newSelectExp", status, [=](BrokerState& state, CMPIrc& code) -> CMPISelectExp* {
        if (query == nullptr || language == nullptr) {
          code = CMPI_RC_ERR_INVALID_PARAMETER;
          return nullptr;
        }
        if (projection != nullptr) {
          *projection = nullptr;
        }
        return state.make<CMPISelectExp>(SelectExpContent{query, language});
      });
}

CMPIBoolean classPathIsA(
    const CMPIBroker* broker, const CMPIObjectPath* path, const char* className, CMPIStatus* status) {
  static constexpr const char* FUNCTION = "CMPIBroker.classPathIsA";
  return brokerValueCall<CMPIBoolean>(
      broker, FUNCTION, status, [=](BrokerState& state, CMPIrc& code) -> CMPIBoolean {
        Object<CMPIObjectPath>* given = livingObject(path, FUNCTION);
        if (given == nullptr) {
          code = CMPI_RC_ERR_INVALID_HANDLE;
          return 0;
        }
        if (className == nullptr) {
          code = CMPI_RC_ERR_INVALID_PARAMETER;
          return 0;
        }
        return state.schema()->isA(given->content().className, className) ? 1 : 0;
      });
}

/** The living object behind a face of any type. */
ObjectCore* anyObject(const void* face, const char* function, CMPIrc& code) {
  ObjectCore* core = ObjectCore::of(face);
  if (core != nullptr && !core->isAlive()) {
    core->broker().addLateUse(*core, function);
    core = nullptr;
  }
  if (core == nullptr) {
    code = CMPI_RC_ERR_INVALID_HANDLE;
  }
  return core;
}

std::string textOfObject(ObjectCore& core) {
  switch (core.kind()) {
  case ObjectKind::String:
    return static_cast<Object<CMPIString>&>(core).content().text.value_or("");
  case ObjectKind::ObjectPath:
    return toPathText(static_cast<Object<CMPIObjectPath>&>(core).content());
  case ObjectKind::Instance:
    return Value::instance(static_cast<Object<CMPIInstance>&>(core).content().snapshot()).toText();
  case ObjectKind::DateTime:
    return static_cast<Object<CMPIDateTime>&>(core).content().text();
  case ObjectKind::Array: {
    const ArrayContent& content = static_cast<Object<CMPIArray>&>(core).content();
    return Value::array(content.elementType, content.elements).toText();
  }
  default:
    return core.describe();
  }
}

CMPIString* toString(const CMPIBroker* broker, const void* object, CMPIStatus* status) {
  static constexpr const char* FUNCTION = "CMPIBroker.toString";
  return brokerValueCall<CMPIString*>(
      broker, FUNCTION, status, [=](BrokerState& state, CMPIrc& code) -> CMPIString* {
        ObjectCore* core = anyObject(object, FUNCTION, code);
        return core == nullptr ? nullptr : makeString(state, textOfObject(*core));
      });
}

CMPIBoolean isOfType(const CMPIBroker* broker, const void* object, const char* type, CMPIStatus* status) {
  static constexpr const char* FUNCTION = "CMPIBroker.isOfType";
  return brokerValueCall<CMPIBoolean>(
      broker, FUNCTION, status, [=](BrokerState&, CMPIrc& code) -> CMPIBoolean {
        const ObjectCore* core = anyObject(object, FUNCTION, code);
        return core != nullptr && textOf(type) == core->typeName() ? 1 : 0;
      });
}

CMPIString* getType(const CMPIBroker* broker, const void* object, CMPIStatus* status) {
  static constexpr const char* FUNCTION = "CMPIBroker.getType";
  return brokerValueCall<CMPIString*>(
      broker, FUNCTION, status, [=](BrokerState& state, CMPIrc& code) -> CMPIString* {
        const ObjectCore* core = anyObject(object, FUNCTION, code);
        return core == nullptr ? nullptr : makeString(state, core->typeName());
      });
}

/** One insert of a message: its type, then its value. */
std::string nextInsert(va_list& inserts) {
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
    Object<CMPIString>* text = livingObject(va_arg(inserts, CMPIString*), "CMPIBroker.getMessage");
    return text == nullptr ? std::string() : text->content().text.value_or("");
  }
  default:
    va_arg(inserts, void*);
    return "";
  }
}

/** Puts the inserts in the places $0 to $9. */
std::string formatMessage(const char* message, CMPICount count, va_list& inserts) {
  std::vector<std::string> texts;
  for (CMPICount i = 0; i < count; ++i) {
    texts.push_back(nextInsert(inserts));
  }
  std::string result;
  for (const char* letter = message == nullptr ? "" : message; *letter != '\0'; ++letter) {
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

CMPIString* makeMessage(
    const CMPIBroker* broker, const char* function, const char* message, CMPIStatus* status, CMPICount count,
    va_list& inserts) {
  return brokerValueCall<CMPIString*>(broker, function, status, [&](BrokerState& state, CMPIrc&) {
    return makeString(state, formatMessage(message, count, inserts));
  });
}

/** There are no translations here, so every message is the default one. */
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

CMPIStatus openMessageFile(const CMPIBroker* broker, const char*, CMPIMsgFileHandle* handle) {
  return brokerStatusCall(broker, "CMPIBroker.openMessageFile", [=](BrokerState&) -> CMPIrc {
    if (handle == nullptr) {
      return CMPI_RC_ERR_INVALID_PARAMETER;
    }
    *handle = nullptr;
    return CMPI_RC_OK;
  });
}

CMPIStatus closeMessageFile(const CMPIBroker* broker, const CMPIMsgFileHandle) {
  return brokerStatusCall(broker, "CMPIBroker.closeMessageFile", [](BrokerState&) { return CMPI_RC_OK; });
}

/** Logging and tracing go to the same handler; what is logged is also a remark of the running request. */
CMPIStatus writeLog(
    const CMPIBroker* broker, const char* function, int severity, const char* id, const char* text,
    const CMPIString* string, bool isRemark) {
  return brokerStatusCall(broker, function, [=](BrokerState& state) {
    Object<CMPIString>* object = livingObject(string, function);
    const std::string complete = object == nullptr ? textOf(text) : textOfObject(*object);
    if (isRemark && state.scope().kind() == Scope::Kind::Request) {
      state.scope().addRemark(complete);
    }
    const auto handlers = state.handlers();
    if (handlers->onLog) {
      handlers->onLog(severity, textOf(id), complete);
    }
    return CMPI_RC_OK;
  });
}

CMPIStatus logMessage(
    const CMPIBroker* broker, int severity, const char* id, const char* text, const CMPIString* string) {
  return writeLog(broker, "CMPIBroker.logMessage", severity, id, text, string, true);
}

CMPIStatus trace(
    const CMPIBroker* broker, int level, const char* component, const char* text, const CMPIString* string) {
  return writeLog(broker, "CMPIBroker.trace", level, component, text, string, false);
}

CMPIError* newError(
    const CMPIBroker* broker, const char* owner, const char* messageId, const char* message,
    const CMPIErrorSeverity severity, const CMPIErrorProbableCause cause, const CMPIrc statusCode,
    CMPIStatus* status) {
  return brokerValueCall<CMPIError*>(
      broker, "CMPIBroker.newCMPIError", status, [=](BrokerState& state, CMPIrc&) {
        ErrorContent content;
        content.owner = textOf(owner);
        content.messageId = textOf(messageId);
        content.message = textOf(message);
        content.severity = severity;
        content.cause = cause;
        content.statusCode = statusCode;
        return state.make<CMPIError>(std::move(content));
      });
}

}  // namespace

CMPIBrokerEncFT* brokerEncapsulationTable() {
  static CMPIBrokerEncFT table = {
      CMPIVersion200,
      newInstance,
      newObjectPath,
      newArgs,
      newString,
      newArray,
      newDateTime,
      newDateTimeFromBinary,
      newDateTimeFromChars,
      newSelectExp,
      classPathIsA,
      toString,
      isOfType,
      getType,
      getMessage,
      logMessage,
      trace,
      newError,
      openMessageFile,
      closeMessageFile,
      getMessage2};
  return &table;
}

}  // namespace tvp::host
