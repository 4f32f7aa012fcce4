// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/server/ServedNamespace.h"

#include <algorithm>

namespace tvp::host::cimxml {
namespace {

/** Those of the features that a class declares itself. */
template <class Feature>
std::vector<Feature> ownFeatures(const std::vector<Feature>& features, const std::string& className) {
  std::vector<Feature> own;
  std::copy_if(features.begin(), features.end(), std::back_inserter(own), [&](const Feature& feature) {
    return equalNames(feature.origin, className);
  });
  return own;
}

void addWithBases(Schema& schema, const SchemaClass& added, const Schema& bases) {
  if (schema.find(added.name) != nullptr) {
    return;
  }
  if (const SchemaClass* base = declaredClass(bases, added.superclass)) {
    addWithBases(schema, *base, bases);
  }
  SchemaClass copy = added;
  copy.properties = ownFeatures(added.properties, added.name);
  copy.methods = ownFeatures(added.methods, added.name);
  copy.positions.clear();
  schema.add(std::move(copy));
}

}  // namespace

const SchemaClass* declaredClass(const Schema& schema, const std::string& className) {
  const SchemaClass* known = schema.find(className);
  return known == nullptr || known->external ? nullptr : known;
}

std::vector<ObjectPath> pathsOf(const std::vector<Instance>& instances) {
  std::vector<ObjectPath> paths;
  paths.reserve(instances.size());
  for (const Instance& instance : instances) {
    paths.push_back(instance.path);
  }
  return paths;
}

std::shared_ptr<const Schema> withBases(const std::vector<const SchemaClass*>& classes, const Schema& bases) {
  auto schema = std::make_shared<Schema>();
  for (const SchemaClass* added : classes) {
    addWithBases(*schema, *added, bases);
  }
  return schema;
}

}  // namespace tvp::host::cimxml
