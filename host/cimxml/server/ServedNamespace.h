// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_SERVER_SERVEDNAMESPACE_H
#define HOST_CIMXML_SERVER_SERVEDNAMESPACE_H

#include "host/provider/Provider.h"
#include "host/schema/Schema.h"

#include <memory>
#include <string>
#include <vector>

namespace tvp::host::cimxml {

/**
 * The operations on one namespace of the server. Paths that are given have its name and a class that it has;
 * paths that are returned are complete. Each operation throws CimFailure when it fails, and is done in the
 * name of a user. Thread-safe.
 */
class ServedNamespace {
public:
  explicit ServedNamespace(std::shared_ptr<const Schema> schema) : m_schema(std::move(schema)) {}
  virtual ~ServedNamespace() = default;
  ServedNamespace(const ServedNamespace&) = delete;
  ServedNamespace& operator=(const ServedNamespace&) = delete;

  /** Whether it is meant by a name that a client uses. */
  virtual bool isCalled(const std::string& name) const = 0;
  /** Its name in paths. */
  virtual const std::string& name() const = 0;
  const Schema& schema() const { return *m_schema; }

  /** The instances of a class and of those below it. */
  virtual std::vector<Instance>
  enumerate(const ObjectPath& classPath, const PropertyList& properties, const std::string& user) = 0;
  virtual std::vector<ObjectPath> enumerateNames(const ObjectPath& classPath, const std::string& user) = 0;
  virtual Instance get(const ObjectPath& path, const PropertyList& properties, const std::string& user) = 0;
  virtual ObjectPath create(const Instance& instance, const std::string& user) = 0;
  virtual void modify(const Instance& instance, const PropertyList& properties, const std::string& user) = 0;
  virtual void remove(const ObjectPath& path, const std::string& user) = 0;
  virtual std::vector<Instance>
  query(const std::string& text, const std::string& language, const std::string& user) = 0;
  virtual std::vector<Instance> associators(
      const ObjectPath& path, const AssociationFilter& filter, const PropertyList& properties,
      const std::string& user) = 0;
  virtual std::vector<ObjectPath>
  associatorNames(const ObjectPath& path, const AssociationFilter& filter, const std::string& user) = 0;
  virtual std::vector<Instance> references(
      const ObjectPath& path, const AssociationFilter& filter, const PropertyList& properties,
      const std::string& user) = 0;
  virtual std::vector<ObjectPath>
  referenceNames(const ObjectPath& path, const AssociationFilter& filter, const std::string& user) = 0;
  virtual MethodOutcome invoke(
      const ObjectPath& path, const std::string& method, const Arguments& input, const std::string& user) = 0;

private:
  const std::shared_ptr<const Schema> m_schema;
};

/** A class that is declared, not only named. @return null if there is none */
const SchemaClass* declaredClass(const Schema& schema, const std::string& className);

/** The paths of instances. */
std::vector<ObjectPath> pathsOf(const std::vector<Instance>& instances);

/**
 * Classes, preceded by those that they inherit from: a class that `classes` only names is taken from `bases`.
 * What both lack stays a name.
 */
std::shared_ptr<const Schema> withBases(const std::vector<const SchemaClass*>& classes, const Schema& bases);

}  // namespace tvp::host::cimxml

#endif
