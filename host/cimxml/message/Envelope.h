// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_MESSAGE_ENVELOPE_H
#define HOST_CIMXML_MESSAGE_ENVELOPE_H

#include <pugixml.hpp>

#include <string>

namespace tvp::host::cimxml {

/** What every message of CIM-XML has around its call; the nodes belong to the document. */
struct Envelope {
  std::string id;           ///< of the message
  pugi::xml_node exchange;  ///< SIMPLEREQ, SIMPLERSP, SIMPLEEXPREQ, SIMPLEEXPRSP
  pugi::xml_node call;      ///< IMETHODCALL and its like
};

/** @throws BadMessage for another document, another version, or several calls in one */
Envelope openEnvelope(const pugi::xml_document& document);

}  // namespace tvp::host::cimxml

#endif
