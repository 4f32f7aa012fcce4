// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/message/Envelope.h"

#include "host/cimxml/message/Failure.h"
#include "host/cimxml/message/XmlDocument.h"

#include <string_view>

namespace tvp::host::cimxml {
namespace {

[[noreturn]] void fail(const std::string& problem) {
  throw BadMessage("request-not-valid", "the message is not one of CIM-XML: " + problem);
}

/** The only element of that name inside, CORRELATOR apart; any name for a null tag. */
pugi::xml_node onlyElement(const pugi::xml_node& parent, const char* tag) {
  pugi::xml_node found;
  for (pugi::xml_node child = firstElement(parent); child; child = nextElement(child)) {
    const std::string_view name = child.name();
    if (name == "CORRELATOR") {
      continue;
    }
    if (found || (tag != nullptr && name != tag)) {
      fail("more or other elements than expected in " + std::string(parent ? parent.name() : "the document"));
    }
    found = child;
  }
  if (!found) {
    fail("expected an element in " + std::string(*parent.name() != '\0' ? parent.name() : "the document"));
  }
  return found;
}

/** Versions count by what is before the point: later minor ones are compatible. */
void requireVersion(
    const pugi::xml_node& element, const char* attribute, const std::string& major, const char* cimError) {
  const std::string version = element.attribute(attribute).value();
  if (version.empty()) {
    fail(std::string("no ") + attribute);
  }
  if (version.substr(0, version.find('.')) != major) {
    throw BadMessage(
        cimError, std::string("the message's ") + attribute + " is not " + major + ".x, the supported one");
  }
}

}  // namespace

Envelope openEnvelope(const pugi::xml_document& document) {
  const pugi::xml_node cim = onlyElement(document, "CIM");
  requireVersion(cim, "CIMVERSION", "2", "unsupported-cim-version");
  requireVersion(cim, "DTDVERSION", "2", "unsupported-dtd-version");
  const pugi::xml_node message = onlyElement(cim, "MESSAGE");
  requireVersion(message, "PROTOCOLVERSION", "1", "unsupported-protocol-version");
  Envelope envelope;
  envelope.id = message.attribute("ID").value();
  if (message.attribute("ID").empty()) {
    fail("the message has no ID");
  }
  envelope.exchange = onlyElement(message, nullptr);
  if (std::string_view(envelope.exchange.name()).substr(0, 5) == "MULTI") {
    throw BadMessage("multiple-requests-unsupported", "the message has several requests; send one in each");
  }
  envelope.call = onlyElement(envelope.exchange, nullptr);
  return envelope;
}

}  // namespace tvp::host::cimxml
