// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_SERVER_PROVIDERNAMESPACE_H
#define HOST_CIMXML_SERVER_PROVIDERNAMESPACE_H

#include "host/cimxml/server/ServedNamespace.h"

namespace tvp::host::cimxml {

/** The namespace whose operations a provider carries out. */
class ProviderNamespace : public ServedNamespace {
public:
  /**
   * @param provider has to outlive this object
   * @param schema the provider's classes @param bases those that they may derive from
   */
  ProviderNamespace(Provider& provider, std::string name, const Schema& schema, const Schema& bases);

  bool isCalled(const std::string& name) const override;
  const std::string& name() const override { return m_name; }
  std::vector<Instance>
  enumerate(const ObjectPath& classPath, const PropertyList& properties, const std::string& user) override;
  std::vector<ObjectPath> enumerateNames(const ObjectPath& classPath, const std::string& user) override;
  /** Success without an instance is "not found". */
  Instance get(const ObjectPath& path, const PropertyList& properties, const std::string& user) override;
  /** Where the provider does not return the path, it is that of the instance's keys. */
  ObjectPath create(const Instance& instance, const std::string& user) override;
  void modify(const Instance& instance, const PropertyList& properties, const std::string& user) override;
  void remove(const ObjectPath& path, const std::string& user) override;
  /** A provider that does not support queries is asked for all instances, which are then selected. */
  std::vector<Instance>
  query(const std::string& text, const std::string& language, const std::string& user) override;
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
  MethodOutcome invoke(
      const ObjectPath& path, const std::string& method, const Arguments& input,
      const std::string& user) override;

private:
  template <class Ask>
  void askForEach(const ObjectPath& classPath, Ask ask) const;
  void complete(ObjectPath& path, const Instance* instance) const;
  std::vector<Instance> completed(InstancesOutcome outcome) const;
  std::vector<ObjectPath> completed(PathsOutcome outcome) const;

  Provider& m_provider;
  const std::string m_name;
};

}  // namespace tvp::host::cimxml

#endif
