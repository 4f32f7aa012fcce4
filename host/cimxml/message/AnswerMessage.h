// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_MESSAGE_ANSWERMESSAGE_H
#define HOST_CIMXML_MESSAGE_ANSWERMESSAGE_H

#include "host/schema/Schema.h"
#include "host/schema/Value.h"

#include <string>
#include <string_view>
#include <vector>

namespace tvp::host::cimxml {

/** An answer as a client receives it, in any of the shapes that servers use. A plain value. */
struct AnswerMessage {
  CMPIrc code = CMPI_RC_OK;  ///< of its ERROR element
  std::string message;
  std::vector<Instance> instances;  ///< with their paths, as far as the shape has them
  std::vector<ObjectPath> paths;
  std::vector<std::string> classNames;
  Value returnValue;  ///< of a method
  Arguments output;

  /**
   * @param schema gives types where the message has none, as some servers leave them out for keys
   * @param method the method that was called; null for an intrinsic operation
   * @throws BadMessage for what is not an answer of CIM-XML
   */
  static AnswerMessage read(std::string_view xml, const Schema& schema, const SchemaMethod* method = nullptr);
};

}  // namespace tvp::host::cimxml

#endif
