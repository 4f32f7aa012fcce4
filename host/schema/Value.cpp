// SPDX-License-Identifier: Apache-2.0
#include "host/schema/Value.h"

#include "host/schema/Names.h"
#include "host/schema/ObjectPathText.h"
#include "text/Quote.h"

#include <algorithm>
#include <cstdio>

namespace tvp::host {
namespace {

template <class Pointer>
bool equalTargets(const Pointer& left, const Pointer& right) {
  return left == right || *left == *right;
}

std::string instanceText(const Instance& instance) {
  std::string result = "instance of " + instance.path.className + " {";
  for (const NamedValue& property : instance.properties) {
    result += property.name + " = " + property.value.toText() + "; ";
  }
  return result + "}";
}

}  // namespace

Value Value::null(CMPIType type) {
  Value value;
  value.m_type = type;
  return value;
}

Value Value::boolean(bool value) {
  return Value(CMPI_boolean, value);
}

Value Value::unsignedInteger(CMPIType type, std::uint64_t value) {
  return Value(type, value);
}

Value Value::signedInteger(CMPIType type, std::int64_t value) {
  return Value(type, value);
}

Value Value::real(CMPIType type, double value) {
  return Value(type, value);
}

Value Value::string(std::string text) {
  return Value(CMPI_string, std::move(text));
}

Value Value::dateTime(DateTime value) {
  return Value(CMPI_dateTime, std::move(value));
}

Value Value::reference(ObjectPath path) {
  return Value(CMPI_ref, std::make_shared<const ObjectPath>(std::move(path)));
}

Value Value::instance(Instance embedded) {
  return instance(std::make_shared<const Instance>(std::move(embedded)));
}

Value Value::instance(std::shared_ptr<const Instance> embedded) {
  return Value(CMPI_instance, std::move(embedded));
}

Value Value::array(CMPIType elementType, List elements) {
  return Value(static_cast<CMPIType>(elementType | CMPI_ARRAY), std::move(elements));
}

const ObjectPath& Value::asReference() const {
  return *std::get<std::shared_ptr<const ObjectPath>>(m_content);
}

const Instance& Value::asInstance() const {
  return *sharedInstance();
}

const std::shared_ptr<const Instance>& Value::sharedInstance() const {
  return std::get<std::shared_ptr<const Instance>>(m_content);
}

std::string Value::toText() const {
  if (isNull()) {
    return "NULL";
  }
  if (isArray()) {
    std::string result;
    for (const Value& element : asArray()) {
      result += (result.empty() ? "" : ", ") + element.toText();
    }
    return "{" + result + "}";
  }
  switch (m_type) {
  case CMPI_boolean:
    return asBoolean() ? "TRUE" : "FALSE";
  case CMPI_dateTime:
    return text::doubleQuoted(asDateTime().text());
  case CMPI_ref:
    return text::doubleQuoted(toPathText(asReference()));
  case CMPI_instance:
    return instanceText(asInstance());
  case CMPI_real32:
  case CMPI_real64: {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%.17g", asReal());
    return buffer;
  }
  case CMPI_string:
    return text::doubleQuoted(asString());
  default:
    return std::holds_alternative<std::int64_t>(m_content) ? std::to_string(asSigned())
                                                           : std::to_string(asUnsigned());
  }
}

bool Value::operator==(const Value& other) const {
  if (m_type != other.m_type || isNull() != other.isNull() || m_content.index() != other.m_content.index()) {
    return false;
  }
  if (const auto* path = std::get_if<std::shared_ptr<const ObjectPath>>(&m_content)) {
    return equalTargets(*path, std::get<std::shared_ptr<const ObjectPath>>(other.m_content));
  }
  if (const auto* embedded = std::get_if<std::shared_ptr<const Instance>>(&m_content)) {
    return equalTargets(*embedded, other.sharedInstance());
  }
  return m_content == other.m_content;
}

bool NamedValue::operator==(const NamedValue& other) const {
  return equalNames(name, other.name) && value == other.value;
}

const Value* findValue(const std::vector<NamedValue>& values, const std::string& name) {
  const auto found = std::find_if(values.begin(), values.end(), [&name](const NamedValue& entry) {
    return equalNames(entry.name, name);
  });
  return found == values.end() ? nullptr : &found->value;
}

Value* findValue(std::vector<NamedValue>& values, const std::string& name) {
  return const_cast<Value*>(findValue(static_cast<const std::vector<NamedValue>&>(values), name));
}

void setValue(std::vector<NamedValue>& values, const std::string& name, Value value) {
  if (Value* known = findValue(values, name)) {
    *known = std::move(value);
  } else {
    values.push_back({name, std::move(value)});
  }
}

bool ObjectPath::operator==(const ObjectPath& other) const {
  if (!equalNames(nameSpace, other.nameSpace) || !equalNames(className, other.className) ||
      keys.size() != other.keys.size()) {
    return false;
  }
  return std::all_of(keys.begin(), keys.end(), [&other](const NamedValue& binding) {
    const Value* theirs = other.key(binding.name);
    return theirs != nullptr && *theirs == binding.value;
  });
}

bool Instance::operator==(const Instance& other) const {
  return equalNames(path.className, other.path.className) && properties == other.properties;
}

Arguments& Arguments::add(const std::string& name, Value value) {
  setValue(values, name, std::move(value));
  return *this;
}

std::ostream& operator<<(std::ostream& stream, const Value& value) {
  return stream << typeName(value.type()) << " " << value.toText();
}

}  // namespace tvp::host
