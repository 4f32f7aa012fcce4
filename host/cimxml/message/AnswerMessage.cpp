// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/message/AnswerMessage.h"

#include "host/cimxml/message/ElementReader.h"
#include "host/cimxml/message/Envelope.h"
#include "host/cimxml/message/Failure.h"
#include "host/cimxml/message/ScalarText.h"
#include "host/cimxml/message/XmlDocument.h"

#include <pugixml.hpp>

namespace tvp::host::cimxml {
namespace {

[[noreturn]] void fail(const std::string& problem) {
  throw BadMessage("request-not-valid", "the message is not an answer of CIM-XML: " + problem);
}

void readError(const pugi::xml_node& element, AnswerMessage& answer) {
  const std::optional<Value> code = parseScalar(element.attribute("CODE").value(), CMPI_uint32);
  if (!code || code->asUnsigned() == 0 || code->asUnsigned() > CMPI_RC_ERROR) {
    fail("its ERROR has no CODE");
  }
  answer.code = static_cast<CMPIrc>(code->asUnsigned());
  answer.message = element.attribute("DESCRIPTION").value();
}

/** One of what IRETURNVALUE has, in the shapes of all operations. */
void readObject(const pugi::xml_node& element, const ElementReader& reader, AnswerMessage& answer) {
  const std::string_view tag = element.name();
  if (tag == "CLASSNAME") {
    answer.classNames.push_back(ElementReader::className(element));
  } else if (tag == "CLASS") {
    answer.classNames.emplace_back(element.attribute("NAME").value());
  } else if (tag == "INSTANCENAME" || tag == "INSTANCEPATH" || tag == "OBJECTPATH") {
    answer.paths.push_back(reader.path(element));
  } else if (tag == "VALUE" || tag == "VALUE.ARRAY" || tag == "VALUE.REFERENCE") {
    answer.returnValue = reader.typedValue(element.parent(), nullptr);
  } else {
    answer.instances.push_back(reader.instance(element));
  }
}

void readContent(
    const pugi::xml_node& response, const ElementReader& reader, const SchemaMethod* method,
    AnswerMessage& answer) {
  for (pugi::xml_node part = firstElement(response); part; part = nextElement(part)) {
    const std::string_view tag = part.name();
    if (tag == "ERROR") {
      readError(part, answer);
    } else if (tag == "RETURNVALUE") {
      answer.returnValue = reader.typedValue(part, method);
    } else if (tag == "IRETURNVALUE") {
      for (pugi::xml_node object = firstElement(part); object; object = nextElement(object)) {
        readObject(object, reader, answer);
      }
    } else if (tag != "PARAMVALUE") {
      fail("unexpected " + std::string(tag));
    }
  }
  answer.output = reader.arguments(response, method);
}

bool isResponse(std::string_view exchange, std::string_view call) {
  return exchange == "SIMPLEEXPRSP"
             ? call == "EXPMETHODRESPONSE"
             : exchange == "SIMPLERSP" && (call == "IMETHODRESPONSE" || call == "METHODRESPONSE");
}

}  // namespace

AnswerMessage AnswerMessage::read(std::string_view xml, const Schema& schema, const SchemaMethod* method) {
  pugi::xml_document document;
  parseXml(document, xml, LARGEST_ANSWER);
  const Envelope envelope = openEnvelope(document);
  if (!isResponse(envelope.exchange.name(), envelope.call.name())) {
    fail("it has no response");
  }
  AnswerMessage answer;
  try {
    readContent(envelope.call, ElementReader(&schema), method, answer);
  } catch (const CimFailure& failure) {
    fail(failure.what());
  }
  return answer;
}

}  // namespace tvp::host::cimxml
