// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/message/RequestMessage.h"

#include "host/cimxml/message/ElementReader.h"
#include "host/cimxml/message/Envelope.h"
#include "host/cimxml/message/Failure.h"
#include "host/cimxml/message/ScalarText.h"
#include "host/cimxml/message/XmlDocument.h"
#include "host/schema/Names.h"

#include <pugixml.hpp>

#include <set>

namespace tvp::host::cimxml {

struct RequestMessage::Content {
  pugi::xml_document document;
  pugi::xml_node call;
  RequestKind kind = RequestKind::Intrinsic;
  std::string id;
  std::string name;
  std::string nameSpace;

  /** The content of a parameter of an intrinsic operation; an empty node if there is none. */
  pugi::xml_node parameter(const std::string& parameterName) const {
    for (const pugi::xml_node& parameter : call.children("IPARAMVALUE")) {
      if (equalNames(parameter.attribute("NAME").value(), parameterName.c_str())) {
        const pugi::xml_node content = ElementReader::content(parameter);
        return std::string_view(content.name()) == "VALUE.NULL" ? pugi::xml_node() : content;
      }
    }
    return {};
  }
};

namespace {

constexpr std::size_t MOST_PARAMETERS = 256;  ///< far beyond any operation or method

[[noreturn]] void failParameter(const std::string& parameter, const std::string& problem) {
  ElementReader::fail("the parameter " + parameter + ": " + problem);
}

/** Reads a parameter if it has a value; a failure names the parameter. */
template <class Read>
auto readIfPresent(const pugi::xml_node& content, const std::string& parameter, Read read)
    -> std::optional<decltype(read(content))> {
  if (!content) {
    return std::nullopt;
  }
  try {
    return read(content);
  } catch (const CimFailure& failure) {
    failParameter(parameter, failure.what());
  }
}

RequestKind kindOf(std::string_view exchange, std::string_view call) {
  if (exchange == "SIMPLEREQ" && call == "IMETHODCALL") {
    return RequestKind::Intrinsic;
  }
  if (exchange == "SIMPLEREQ" && call == "METHODCALL") {
    return RequestKind::Method;
  }
  if (exchange == "SIMPLEEXPREQ" && call == "EXPMETHODCALL") {
    return RequestKind::Export;
  }
  throw BadMessage(
      "request-not-valid", "the message is not a request: it has no call that this server knows");
}

/** The path around the target of a method call. */
pugi::xml_node targetOf(const pugi::xml_node& call) {
  const pugi::xml_node path = call.child("LOCALINSTANCEPATH");
  return path ? path : call.child("LOCALCLASSPATH");
}

}  // namespace

RequestMessage RequestMessage::read(std::string_view xml) {
  auto content = std::make_unique<Content>();
  parseXml(content->document, xml, LARGEST_REQUEST);
  const Envelope envelope = openEnvelope(content->document);
  content->call = envelope.call;
  content->id = envelope.id;
  content->kind = kindOf(envelope.exchange.name(), envelope.call.name());
  content->name = envelope.call.attribute("NAME").value();
  if (content->name.empty()) {
    throw BadMessage("request-not-valid", "the request does not name its operation");
  }
  std::size_t children = 0;
  for (pugi::xml_node child = firstElement(content->call); child; child = nextElement(child)) {
    if (++children > MOST_PARAMETERS) {
      throw BadMessage("request-not-valid", "the request has too many parameters");
    }
  }
  if (content->kind != RequestKind::Export) {
    const pugi::xml_node place =
        content->kind == RequestKind::Method ? targetOf(content->call) : content->call;
    try {
      content->nameSpace = ElementReader::nameSpace(place.child("LOCALNAMESPACEPATH"));
    } catch (const CimFailure& failure) {
      throw BadMessage("request-not-valid", std::string("the request has no target: ") + failure.what());
    }
  }
  return RequestMessage(std::move(content));
}

RequestMessage::RequestMessage(std::unique_ptr<Content> content) : m_content(std::move(content)) {}
RequestMessage::RequestMessage(RequestMessage&&) noexcept = default;
RequestMessage::~RequestMessage() = default;

RequestKind RequestMessage::kind() const {
  return m_content->kind;
}

const std::string& RequestMessage::id() const {
  return m_content->id;
}

const std::string& RequestMessage::name() const {
  return m_content->name;
}

const std::string& RequestMessage::nameSpace() const {
  return m_content->nameSpace;
}

std::vector<std::string> RequestMessage::parameters() const {
  std::vector<std::string> names;
  for (const pugi::xml_node& parameter : m_content->call.children("IPARAMVALUE")) {
    names.emplace_back(parameter.attribute("NAME").value());
  }
  return names;
}

std::optional<std::string> RequestMessage::className(const std::string& parameter) const {
  return readIfPresent(m_content->parameter(parameter), parameter, ElementReader::className);
}

std::optional<ObjectPath> RequestMessage::path(const std::string& parameter) const {
  return readIfPresent(m_content->parameter(parameter), parameter, [this](const pugi::xml_node& element) {
    ObjectPath path = ElementReader().path(element);
    path.nameSpace = path.nameSpace.empty() ? nameSpace() : path.nameSpace;
    return path;
  });
}

std::optional<Instance> RequestMessage::instance(const std::string& parameter, const Schema& schema) const {
  return readIfPresent(
      m_content->parameter(parameter), parameter, [this, &schema](const pugi::xml_node& element) {
        Instance instance = ElementReader(&schema).instance(element);
        instance.path.nameSpace = nameSpace();
        return instance;
      });
}

std::optional<bool> RequestMessage::boolean(const std::string& parameter) const {
  const std::optional<std::string> content = text(parameter);
  if (!content) {
    return std::nullopt;
  }
  const std::optional<Value> value = parseScalar(*content, CMPI_boolean);
  if (!value) {
    failParameter(parameter, "expected TRUE or FALSE");
  }
  return value->asBoolean();
}

std::optional<std::string> RequestMessage::text(const std::string& parameter) const {
  return readIfPresent(m_content->parameter(parameter), parameter, ElementReader::text);
}

std::optional<std::uint32_t> RequestMessage::number(const std::string& parameter) const {
  const std::optional<std::string> content = text(parameter);
  if (!content) {
    return std::nullopt;
  }
  const std::optional<Value> value = parseScalar(*content, CMPI_uint32);
  if (!value) {
    failParameter(parameter, "expected a number from 0 to 4294967295");
  }
  return static_cast<std::uint32_t>(value->asUnsigned());
}

std::optional<std::vector<std::string>> RequestMessage::texts(const std::string& parameter) const {
  return readIfPresent(m_content->parameter(parameter), parameter, ElementReader::texts);
}

ObjectPath RequestMessage::target() const {
  return ElementReader().path(targetOf(m_content->call));
}

Arguments RequestMessage::arguments(const SchemaMethod* method) const {
  return ElementReader().arguments(m_content->call, method);
}

Instance RequestMessage::indication() const {
  for (const pugi::xml_node& parameter : m_content->call.children("EXPPARAMVALUE")) {
    if (equalNames(parameter.attribute("NAME").value(), "NewIndication")) {
      return ElementReader().instance(ElementReader::content(parameter));
    }
  }
  ElementReader::fail("the export has no NewIndication");
}

}  // namespace tvp::host::cimxml
