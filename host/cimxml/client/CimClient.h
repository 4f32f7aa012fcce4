// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_CLIENT_CIMCLIENT_H
#define HOST_CIMXML_CLIENT_CIMCLIENT_H

#include "host/cimxml/client/ServerUrl.h"
#include "host/provider/Operations.h"
#include "host/schema/Schema.h"

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>

namespace tvp::host::cimxml {

/** A server that cannot be reached, refuses the user, or does not answer CIM-XML; what() says what to do. */
class ServerError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

struct CimClientOptions {
  ServerUrl url;
  std::string password;
  std::string certificates;          ///< file of trusted certificates; empty: those of the system
  std::chrono::seconds timeout{60};  ///< for a whole answer
};

/**
 * A WBEM client: the operations, asked of a server over one connection, which is made when it is first needed
 * and kept. A status of the server is in the outcome; what is no answer is a ServerError. One thread.
 */
class CimClient : public Operations {
public:
  /** @param schema gives the types and the properties that an answer leaves out; a class that it does not
   * have is taken as it comes. @throws ServerError for a file of certificates that cannot be used */
  CimClient(CimClientOptions options, std::shared_ptr<const Schema> schema);
  ~CimClient() override;

  InstancesOutcome enumerateInstances(const ObjectPath& path, const PropertyList& properties = {}) override;
  PathsOutcome enumerateInstanceNames(const ObjectPath& path) override;
  InstancesOutcome getInstance(const ObjectPath& path, const PropertyList& properties = {}) override;
  PathsOutcome createInstance(const ObjectPath& path, const Instance& instance) override;
  Outcome modifyInstance(
      const ObjectPath& path, const Instance& instance, const PropertyList& properties = {}) override;
  Outcome deleteInstance(const ObjectPath& path) override;
  InstancesOutcome
  execQuery(const ObjectPath& path, const std::string& query, const std::string& language) override;
  MethodOutcome
  invokeMethod(const ObjectPath& path, const std::string& method, const Arguments& input) override;
  InstancesOutcome associators(
      const ObjectPath& path, const AssociationFilter& filter, const PropertyList& properties = {}) override;
  PathsOutcome associatorNames(const ObjectPath& path, const AssociationFilter& filter) override;
  InstancesOutcome references(
      const ObjectPath& path, const AssociationFilter& filter, const PropertyList& properties = {}) override;
  PathsOutcome referenceNames(const ObjectPath& path, const AssociationFilter& filter) override;

private:
  struct Content;
  std::unique_ptr<Content> m_content;
};

}  // namespace tvp::host::cimxml

#endif
