// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_MESSAGE_XMLDOCUMENT_H
#define HOST_CIMXML_MESSAGE_XMLDOCUMENT_H

#include <pugixml.hpp>

#include <cstddef>
#include <string>
#include <string_view>

namespace tvp::host::cimxml {

/** Elements and attributes that a document may have, as each takes more memory than its text does. */
constexpr std::size_t LARGEST_REQUEST = 100000;
constexpr std::size_t LARGEST_ANSWER = 20000000;

/**
 * Reads a document of XML 1.0 in UTF-8.
 *
 * Refuses what the parser would let pass: bytes that are not UTF-8, another declared encoding, characters
 * that XML cannot have, document type definitions, references to entities other than the five of XML,
 * attributes that come twice, more than one root, elements nested more than 64 deep, and more elements than
 * the limit.
 * @throws BadMessage request-not-well-formed
 */
void parseXml(pugi::xml_document& document, std::string_view xml, std::size_t largestCount);

/** The text of an element, its character data joined. */
std::string textOf(const pugi::xml_node& element);

/** The first element inside, skipping character data; an empty node if there is none. */
pugi::xml_node firstElement(const pugi::xml_node& parent);
pugi::xml_node nextElement(const pugi::xml_node& element);

}  // namespace tvp::host::cimxml

#endif
