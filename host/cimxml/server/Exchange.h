// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_SERVER_EXCHANGE_H
#define HOST_CIMXML_SERVER_EXCHANGE_H

#include "cmpidt.h"

#include <functional>
#include <map>
#include <string>

namespace tvp::host::cimxml {

/** What of an HTTP request concerns CIM-XML; absent headers are empty. */
struct HttpCall {
  std::string operation;        ///< CIMOperation, without the prefix of a namespace of headers
  std::string exportOperation;  ///< CIMExport
  std::string method;           ///< CIMMethod or CIMExportMethod, decoded
  std::string object;           ///< CIMObject, decoded
  std::string protocolVersion;  ///< CIMProtocolVersion
  std::string contentType;
  std::string body;
  std::string query;   ///< of a page: what follows the question mark of its address, as it is
  std::string user;    ///< who asks, for the principal; of a page, empty for whoever was not asked
  std::string client;  ///< address and port, for the log
};

/** The answer, and what the log of the server says of it. */
struct HttpReply {
  int status = 200;
  std::map<std::string, std::string> headers;  ///< besides Content-Type and Content-Length
  std::string contentType = "application/xml; charset=utf-8";
  std::string body;

  std::string operation;  ///< for the log: "EnumerateInstances", or the method's name
  std::string className;
  CMPIrc code = CMPI_RC_OK;
  bool routine = false;  ///< not worth a line of the log, which only failures get
};

/** Answers one call. Called by several threads at once; never throws. */
using CallHandler = std::function<HttpReply(const HttpCall&)>;

}  // namespace tvp::host::cimxml

#endif
