// SPDX-License-Identifier: Apache-2.0
#ifndef BACKEND_TVPCIMINSTANCEWRAPPER_H
#define BACKEND_TVPCIMINSTANCEWRAPPER_H

#include "CIM/Framework/CIMInstance.h"
#include "CIM/Framework/CIMProperty.h"
#include "CIM/Framework/CIMValue.h"
#include "CIM/Framework/DateAndTime.h"

#include <string>
#include <utility>
#include <vector>

namespace tvp::cim::fwf {

/** Type code of a property whose C++ type is T, and the type of its elements. Left undefined for all others.
 */
template <typename T>
struct PropertyKind;

template <typename Element, Primitive_DataType code>
struct PropertyKindOf {
  using ElementType = Element;
  static constexpr Primitive_DataType TYPE = code;
};

template <>
struct PropertyKind<std::string> : PropertyKindOf<std::string, PDT_STRING> {};
template <>
struct PropertyKind<unsigned char> : PropertyKindOf<unsigned char, PDT_UINT8> {};
template <>
struct PropertyKind<unsigned short> : PropertyKindOf<unsigned short, PDT_UINT16> {};
template <>
struct PropertyKind<unsigned int> : PropertyKindOf<unsigned int, PDT_UINT32> {};
template <>
struct PropertyKind<unsigned long long> : PropertyKindOf<unsigned long long, PDT_UINT64> {};
template <>
struct PropertyKind<short> : PropertyKindOf<short, PDT_SINT16> {};
template <>
struct PropertyKind<bool> : PropertyKindOf<bool, PDT_BOOLEAN> {};
template <>
struct PropertyKind<CIMInstance> : PropertyKindOf<CIMInstance, PDT_INSTANCE> {};
template <>
struct PropertyKind<std::vector<CIMInstance>> : PropertyKindOf<CIMInstance, PDT_INSTANCE_ARRAY> {};
template <>
struct PropertyKind<std::vector<std::string>> : PropertyKindOf<std::string, PDT_STRING_ARRAY> {};
template <>
struct PropertyKind<std::vector<unsigned char>> : PropertyKindOf<unsigned char, PDT_UINT8_ARRAY> {};
template <>
struct PropertyKind<std::vector<unsigned short>> : PropertyKindOf<unsigned short, PDT_UINT16_ARRAY> {};
template <>
struct PropertyKind<std::vector<unsigned int>> : PropertyKindOf<unsigned int, PDT_UINT32_ARRAY> {};
template <>
struct PropertyKind<std::vector<unsigned long long>> : PropertyKindOf<unsigned long long, PDT_UINT64_ARRAY> {
};

/** A property of the CIM type that matches T: a scalar with one element, or an array for a vector. */
template <typename T>
CIMProperty makeProperty(const char* name, T value, bool isKey = false, bool extraFlag = false) {
  using Kind = PropertyKind<T>;
  constexpr bool isArray = (Kind::TYPE % 2) == 1;
  return CIMProperty(
      name, CIMValue<typename Kind::ElementType>(std::move(value), isArray, false), isKey, Kind::TYPE,
      extraFlag);
}

/** A date and time is represented by its text. */
inline CIMProperty
makeProperty(const char* name, DateAndTime value, bool isKey = false, bool extraFlag = false) {
  return CIMProperty(
      name, CIMValue<std::string>(value.getDateAndTimeStringValue(), false, false), isKey, PDT_DATETIME,
      extraFlag);
}

/**
 * A thin layer over a CIMInstance with which the builders fill it property by property. Properties are
 * appended and never replaced, so a wrapper that is used for several objects accumulates. Not locked: a
 * wrapper belongs to one thread.
 */
class tvpCIMInstanceWrapper {
public:
  tvpCIMInstanceWrapper() = default;

  /** The instance itself, to read its path or to take it (it may be moved from). */
  CIMInstance& instance() { return m_instance; }
  const CIMInstance& instance() const { return m_instance; }

  /**
   * Appends a property of the CIM type that matches T: std::string, unsigned char, unsigned short, unsigned
   * int, unsigned long long, short, bool, DateAndTime, CIMInstance, or a vector of std::string, unsigned
   * char, unsigned short, unsigned int, unsigned long long or CIMInstance.
   * @param isKey makes the property a key of the instance
   * @param extraFlag stored with the property
   */
  template <typename T>
  void tvpAddProp(const char* name, T value, bool isKey, bool extraFlag) {
    m_instance.addProperty(makeProperty(name, std::move(value), isKey, extraFlag));
  }

  /**
   * Appends one element to the array property of that name, creating the property if necessary. For
   * std::string, unsigned char and unsigned int.
   * @return false, changing nothing, if the property of that name is not an array of T
   */
  template <typename T>
  bool tvpPushBack(const char* name, const T& value);

private:
  CIMInstance m_instance;
};

extern template bool tvpCIMInstanceWrapper::tvpPushBack<std::string>(const char*, const std::string&);
extern template bool tvpCIMInstanceWrapper::tvpPushBack<unsigned char>(const char*, const unsigned char&);
extern template bool tvpCIMInstanceWrapper::tvpPushBack<unsigned int>(const char*, const unsigned int&);

}  // namespace tvp::cim::fwf

#endif
