// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_SERVER_CIMSERVICE_H
#define HOST_CIMXML_SERVER_CIMSERVICE_H

#include "host/cimxml/indications/Subscriptions.h"
#include "host/cimxml/server/Exchange.h"
#include "host/provider/Provider.h"

#include <memory>
#include <string>

namespace tvp::host::cimxml {

struct CimServiceOptions {
  std::string nameSpace = "root/cimv2";  ///< that of the provider's classes
};

/**
 * The operations of a WBEM server: instances, associations and methods go to the provider, classes come from
 * the schema, and the interop namespace answers what clients look for first and keeps the subscriptions.
 * Thread-safe.
 */
class CimService {
public:
  /** All must outlive the service. @param interop the classes of the interop namespace */
  CimService(
      Provider& provider, std::shared_ptr<const Schema> schema, std::shared_ptr<const Schema> interop,
      Subscriptions& subscriptions, CimServiceOptions options);
  ~CimService();

  /** Answers one call; never throws. */
  HttpReply answer(const HttpCall& call);

private:
  struct Content;
  std::unique_ptr<Content> m_content;
};

}  // namespace tvp::host::cimxml

#endif
