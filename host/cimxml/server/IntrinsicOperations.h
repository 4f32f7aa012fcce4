// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_SERVER_INTRINSICOPERATIONS_H
#define HOST_CIMXML_SERVER_INTRINSICOPERATIONS_H

#include "host/cimxml/message/RequestMessage.h"
#include "host/cimxml/server/ServedNamespace.h"

#include <string>

namespace tvp::host::cimxml {

/** An intrinsic operation that a client asks for. */
struct IntrinsicCall {
  const RequestMessage& message;
  ServedNamespace& nameSpace;
  const std::string& user;
  std::string className;  ///< of what it is about, once that is known; for the log
};

/**
 * Carries an operation out.
 * @return the document of the answer
 * @throws CimFailure, also for an operation that is not offered and for parameters that it does not have
 */
std::string answerIntrinsic(IntrinsicCall& call);

/** The class, as the schema spells it. @throws CimFailure with CMPI_RC_ERR_INVALID_CLASS */
const SchemaClass& existingClass(const Schema& schema, const std::string& className);

}  // namespace tvp::host::cimxml

#endif
