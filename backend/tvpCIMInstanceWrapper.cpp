// SPDX-License-Identifier: Apache-2.0
#include "backend/tvpCIMInstanceWrapper.h"

namespace tvp::cim::fwf {

namespace {

template <typename T>
bool appendElement(CIMProperty& property, const T& value) {
  using Array = std::vector<T>;
  if (property.getType() != PropertyKind<Array>::TYPE) {
    return false;
  }
  Array elements = property.slot<T>().m_values;
  elements.push_back(value);
  CIMProperty longer = makeProperty("", elements);
  property.setPropValue(PropertyKind<Array>::TYPE, longer);
  return true;
}

}  // namespace

template <typename T>
bool tvpCIMInstanceWrapper::tvpPushBack(const char* name, const T& value) {
  CIMProperty* property = m_instance.getPropertyByName(name);
  if (property == nullptr) {
    tvpAddProp(name, std::vector<T>{value}, false, false);
    return true;
  }
  if (!appendElement(*property, value)) {
    return false;
  }
  if (CIMProperty* key = m_instance.getKeyPropertyByName(name)) {
    appendElement(*key, value);
  }
  return true;
}

template bool tvpCIMInstanceWrapper::tvpPushBack<std::string>(const char*, const std::string&);
template bool tvpCIMInstanceWrapper::tvpPushBack<unsigned char>(const char*, const unsigned char&);
template bool tvpCIMInstanceWrapper::tvpPushBack<unsigned int>(const char*, const unsigned int&);

}  // namespace tvp::cim::fwf
