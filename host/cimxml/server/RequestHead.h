// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_SERVER_REQUESTHEAD_H
#define HOST_CIMXML_SERVER_REQUESTHEAD_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tvp::host::cimxml {

/** Why a request is refused. */
struct Refusal {
  int status = 400;    ///< of HTTP
  std::string reason;  ///< a sentence for the client
};

/** The refusal as a complete answer that ends the connection. */
std::string refusalText(const Refusal& refusal);

/**
 * Looks at the head of a request, from its first byte to the empty line, before it is interpreted: whatever
 * two readers could understand in different ways, and whatever is not needed for CIM-XML, is refused.
 * @param longestBody the bytes that the body may have
 */
std::optional<Refusal> refusalOf(std::string_view head, std::size_t longestBody);

}  // namespace tvp::host::cimxml

#endif
