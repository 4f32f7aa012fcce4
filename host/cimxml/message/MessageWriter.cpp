// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/message/MessageWriter.h"

#include "host/cimxml/message/ElementWriter.h"
#include "host/cimxml/message/XmlWriter.h"

namespace tvp::host::cimxml {
namespace {

constexpr std::string_view DECLARATION = "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n";

/** The tags that stand around an answer or a request. */
struct Frame {
  const char* exchange;
  const char* call;
};
constexpr Frame INTRINSIC_ANSWER = {"SIMPLERSP", "IMETHODRESPONSE"};
constexpr Frame METHOD_ANSWER = {"SIMPLERSP", "METHODRESPONSE"};
constexpr Frame EXPORT_ANSWER = {"SIMPLEEXPRSP", "EXPMETHODRESPONSE"};
constexpr Frame INTRINSIC_REQUEST = {"SIMPLEREQ", "IMETHODCALL"};
constexpr Frame METHOD_REQUEST = {"SIMPLEREQ", "METHODCALL"};
constexpr Frame EXPORT_REQUEST = {"SIMPLEEXPREQ", "EXPMETHODCALL"};

/** A whole document. @param body is called with the text to append the content of the call to */
template <class Body>
std::string message(const Frame& frame, const AnswerHead& head, Body body) {
  std::string output(DECLARATION);
  {
    const XmlElement cim(output, "CIM", {{"CIMVERSION", "2.0"}, {"DTDVERSION", "2.0"}});
    const XmlElement message(output, "MESSAGE", {{"ID", head.id}, {"PROTOCOLVERSION", "1.0"}});
    const XmlElement exchange(output, frame.exchange);
    const XmlElement call(output, frame.call, {{"NAME", head.name}});
    body(output);
  }
  return output;
}

/** The answer to an intrinsic operation that returns objects: without any, it has no IRETURNVALUE. */
template <class Objects, class Write>
std::string objectsAnswer(
    const AnswerHead& head, const Objects& objects, Write write, const Schema* schema = nullptr,
    const Detail* detail = nullptr) {
  return message(INTRINSIC_ANSWER, head, [&](std::string& output) {
    if (objects.empty()) {
      return;
    }
    const XmlElement returned(output, "IRETURNVALUE");
    ElementWriter writer(output, schema, detail);
    for (const auto& object : objects) {
      write(writer, output, object);
    }
  });
}

void writeNamedInstance(ElementWriter& writer, std::string& output, const Instance& instance) {
  const XmlElement element(output, "VALUE.NAMEDINSTANCE");
  writer.instanceName(instance.path);
  writer.instance(instance);
}

void writeParameter(std::string& output, const IntrinsicParameter& parameter) {
  const XmlElement element(output, "IPARAMVALUE", {{"NAME", parameter.name}});
  ElementWriter writer(output);
  switch (parameter.kind) {
  case IntrinsicParameter::Kind::ClassName:
    writer.className(parameter.text);
    break;
  case IntrinsicParameter::Kind::InstanceName:
    if (parameter.path.keys.empty()) {
      writer.className(parameter.path.className);
    } else {
      writer.instanceName(parameter.path);
    }
    break;
  case IntrinsicParameter::Kind::Instance:
    writer.instance(parameter.instance);
    break;
  case IntrinsicParameter::Kind::NamedInstance:
    writeNamedInstance(writer, output, parameter.instance);
    break;
  case IntrinsicParameter::Kind::Text:
    writer.value(Value::string(parameter.text));
    break;
  case IntrinsicParameter::Kind::Texts: {
    Value::List texts;
    for (const std::string& text : parameter.texts) {
      texts.push_back(Value::string(text));
    }
    writer.value(Value::array(CMPI_string, std::move(texts)));
    break;
  }
  case IntrinsicParameter::Kind::Boolean:
    writer.value(Value::boolean(parameter.flag));
    break;
  }
}

void writeArguments(ElementWriter& writer, const Arguments& arguments) {
  for (const NamedValue& argument : arguments.values) {
    writer.argument(argument);
  }
}

}  // namespace

std::string emptyAnswer(const AnswerHead& head) {
  return message(INTRINSIC_ANSWER, head, [](std::string&) {});
}

std::string errorAnswer(const AnswerHead& head, bool method, CMPIrc code, const std::string& text) {
  return message(method ? METHOD_ANSWER : INTRINSIC_ANSWER, head, [&](std::string& output) {
    const std::string number = std::to_string(static_cast<int>(code));
    appendTag(
        output, "ERROR",
        {{"CODE", number}, {"DESCRIPTION", text.empty() ? std::string_view() : std::string_view(text)}},
        "/>\n");
  });
}

std::string instancesAnswer(
    const AnswerHead& head, const std::vector<Instance>& instances, ObjectShape shape, const Detail& detail,
    const Schema& schema) {
  const auto write = [shape](ElementWriter& writer, std::string& output, const Instance& instance) {
    switch (shape) {
    case ObjectShape::Instance:
      writer.instance(instance);
      break;
    case ObjectShape::NamedInstance:
      writeNamedInstance(writer, output, instance);
      break;
    case ObjectShape::ObjectWithPath: {
      const XmlElement element(output, "VALUE.OBJECTWITHPATH");
      writer.instancePath(instance.path);
      writer.instance(instance);
      break;
    }
    }
  };
  return objectsAnswer(head, instances, write, &schema, &detail);
}

std::string pathsAnswer(const AnswerHead& head, const std::vector<ObjectPath>& paths, PathShape shape) {
  return objectsAnswer(
      head, paths, [shape](ElementWriter& writer, std::string& output, const ObjectPath& path) {
        if (shape == PathShape::InstanceName) {
          writer.instanceName(path);
        } else {
          const XmlElement element(output, "OBJECTPATH");
          writer.instancePath(path);
        }
      });
}

std::string
classesAnswer(const AnswerHead& head, const std::vector<const SchemaClass*>& classes, const Detail& detail) {
  const auto write = [](ElementWriter& writer, std::string&, const SchemaClass* schemaClass) {
    writer.schemaClass(*schemaClass);
  };
  return objectsAnswer(head, classes, write, nullptr, &detail);
}

std::string classNamesAnswer(const AnswerHead& head, const std::vector<std::string>& names) {
  return objectsAnswer(head, names, [](ElementWriter& writer, std::string&, const std::string& name) {
    writer.className(name);
  });
}

std::string valueAnswer(const AnswerHead& head, const Value& value) {
  return message(INTRINSIC_ANSWER, head, [&value](std::string& output) {
    if (!value.isNull()) {
      const XmlElement returned(output, "IRETURNVALUE");
      ElementWriter(output).value(value);
    }
  });
}

std::string methodAnswer(const AnswerHead& head, const Value& returnValue, const Arguments& output) {
  return message(METHOD_ANSWER, head, [&](std::string& text) {
    ElementWriter writer(text);
    writer.returnValue(returnValue);
    writeArguments(writer, output);
  });
}

std::string exportAnswer(const AnswerHead& head) {
  return message(EXPORT_ANSWER, head, [](std::string&) {});
}

std::string intrinsicRequest(
    const std::string& id, const std::string& operation, const std::string& nameSpace,
    const std::vector<IntrinsicParameter>& parameters) {
  return message(INTRINSIC_REQUEST, {id, operation}, [&](std::string& output) {
    ElementWriter(output).localNameSpacePath(nameSpace);
    for (const IntrinsicParameter& parameter : parameters) {
      writeParameter(output, parameter);
    }
  });
}

std::string methodRequest(
    const std::string& id, const ObjectPath& target, const std::string& method, const Arguments& input) {
  return message(METHOD_REQUEST, {id, method}, [&](std::string& output) {
    ElementWriter writer(output);
    writer.localPath(target);
    writeArguments(writer, input);
  });
}

std::string exportRequest(const std::string& id, const Instance& indication) {
  return message(EXPORT_REQUEST, {id, "ExportIndication"}, [&indication](std::string& output) {
    const XmlElement element(output, "EXPPARAMVALUE", {{"NAME", "NewIndication"}});
    ElementWriter(output).instance(indication);
  });
}

}  // namespace tvp::host::cimxml
