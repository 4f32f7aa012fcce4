// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_SERVER_INTEROPNAMESPACE_H
#define HOST_CIMXML_SERVER_INTEROPNAMESPACE_H

#include "host/cimxml/indications/Subscriptions.h"
#include "host/cimxml/server/ServedNamespace.h"

namespace tvp::host::cimxml {

/**
 * What clients look for first: the namespaces, the server, and the filters, handlers and subscriptions. It
 * has the provider's classes of indications, too, as indications come from this namespace.
 */
class InteropNamespace : public ServedNamespace {
public:
  /**
   * @param interop its own classes @param provided those of the provider
   * @param subscriptions has to outlive this object
   * @param provider the name of the provider's namespace
   */
  InteropNamespace(
      const Schema& interop, const Schema& provided, Subscriptions& subscriptions,
      const std::string& provider);

  bool isCalled(const std::string& name) const override;
  const std::string& name() const override { return m_name; }
  std::vector<Instance>
  enumerate(const ObjectPath& classPath, const PropertyList& properties, const std::string& user) override;
  std::vector<ObjectPath> enumerateNames(const ObjectPath& classPath, const std::string& user) override;
  Instance get(const ObjectPath& path, const PropertyList& properties, const std::string& user) override;
  ObjectPath create(const Instance& instance, const std::string& user) override;
  void modify(const Instance& instance, const PropertyList& properties, const std::string& user) override;
  void remove(const ObjectPath& path, const std::string& user) override;
  std::vector<Instance>
  query(const std::string& text, const std::string& language, const std::string& user) override;
  /** The filter and the handler of a subscription are associated. */
  std::vector<Instance> associators(
      const ObjectPath& path, const AssociationFilter& filter, const PropertyList& properties,
      const std::string& user) override;
  std::vector<ObjectPath>
  associatorNames(const ObjectPath& path, const AssociationFilter& filter, const std::string& user) override;
  std::vector<Instance> references(
      const ObjectPath& path, const AssociationFilter& filter, const PropertyList& properties,
      const std::string& user) override;
  std::vector<ObjectPath>
  referenceNames(const ObjectPath& path, const AssociationFilter& filter, const std::string& user) override;
  /** None of its classes has a method. */
  MethodOutcome invoke(
      const ObjectPath& path, const std::string& method, const Arguments& input,
      const std::string& user) override;

private:
  /** One end of a subscription, and the opposite one. */
  struct Link;

  std::vector<Instance> instances(const std::string& className) const;
  std::vector<Link> links(const ObjectPath& path, const AssociationFilter& filter) const;

  Subscriptions& m_subscriptions;
  const std::string m_name;
  std::vector<Instance> m_fixed;  ///< the namespaces and the server
};

}  // namespace tvp::host::cimxml

#endif
