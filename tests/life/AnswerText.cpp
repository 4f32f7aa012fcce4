// SPDX-License-Identifier: Apache-2.0
#include "life/AnswerText.h"

#include "host/schema/Names.h"

namespace tvp::test {
namespace {

std::string valueText(const host::Value& value) {
  const std::string type = value.type() == CMPI_null ? "untyped" : host::typeName(value.type());
  return type + " " + value.toText();
}

std::string pathText(const host::ObjectPath& path) {
  std::string text = path.host.empty() ? "" : "//" + path.host + "/";
  text += path.nameSpace + ":" + path.className;
  for (const host::NamedValue& key : path.keys) {
    text += " " + key.name + "=(" + valueText(key.value) + ")";
  }
  return text;
}

bool isEmbedded(const host::Value& value) {
  return !value.isNull() && (value.type() & ~CMPI_ARRAY) == CMPI_instance;
}

/** Embedded instances get lines of their own, so that a difference is seen at once. */
std::string linesOfValue(const host::NamedValue& named) {
  if (!isEmbedded(named.value)) {
    return "  " + named.name + " " + valueText(named.value) + "\n";
  }
  std::string text = "  " + named.name + " " + host::typeName(named.value.type()) + "\n";
  if (!named.value.isArray()) {
    return text + instanceText(named.value.asInstance());
  }
  for (const host::Value& element : named.value.asArray()) {
    text += element.isNull() ? "NULL\n" : instanceText(element.asInstance());
  }
  return text;
}

std::string linesOf(const std::vector<host::NamedValue>& values) {
  std::string text;
  for (const host::NamedValue& value : values) {
    text += linesOfValue(value);
  }
  return text;
}

}  // namespace

std::string instanceText(const host::Instance& instance) {
  return "instance " + pathText(instance.path) + "\n" + linesOf(instance.properties);
}

std::string answerText(const host::Outcome& outcome) {
  const std::string message = outcome.message.empty() ? "" : " \"" + outcome.message + "\"";
  return "status " + std::to_string(outcome.rc) + message + "\n";
}

std::string answerText(const host::InstancesOutcome& outcome) {
  std::string text = answerText(static_cast<const host::Outcome&>(outcome));
  for (const host::Instance& instance : outcome.instances) {
    text += instanceText(instance);
  }
  return text;
}

std::string answerText(const host::PathsOutcome& outcome) {
  std::string text = answerText(static_cast<const host::Outcome&>(outcome));
  for (const host::ObjectPath& path : outcome.paths) {
    text += "path " + pathText(path) + "\n";
  }
  return text;
}

std::string answerText(const host::MethodOutcome& outcome) {
  return answerText(static_cast<const host::Outcome&>(outcome)) + "returned " +
         valueText(outcome.returnValue) + "\n" + linesOf(outcome.output.values);
}

}  // namespace tvp::test
