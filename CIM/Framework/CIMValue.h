// SPDX-License-Identifier: Apache-2.0
#ifndef CIM_FRAMEWORK_CIMVALUE_H
#define CIM_FRAMEWORK_CIMVALUE_H

#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace tvp::cim::fwf {

class CIMObjectPath;
class CIMInstance;

/** Whether T is one of the listed types. */
template <typename T, typename... Types>
inline constexpr bool isOneOf = (std::is_same_v<T, Types> || ...);

/**
 * One value of a CIM type: a list of elements with an array flag and a null flag. A scalar is a list of one
 * element.
 *
 * COMPAT: assignment has two rules, and plugins rely on both. For short, bool and CIMInstance, everything is
 * replaced. For all other types, an empty source leaves the target's elements unchanged, and the target's
 * array flag never changes. Moving follows the same rules as copying.
 *
 * Include CIMObjectPath.h or CIMInstance.h to use the value of that type.
 */
template <typename T>
class CIMValue {
public:
  /** Whether a value can be made from one element, or from a list of them. */
  static constexpr bool hasScalarConstructor = isOneOf<
      T, bool, signed char, unsigned char, short, unsigned short, unsigned int, unsigned long long,
      std::string, CIMObjectPath, CIMInstance>;
  static constexpr bool hasListConstructor = isOneOf<
      T, signed char, unsigned char, unsigned short, unsigned int, unsigned long long, std::string,
      CIMObjectPath, CIMInstance>;

  /** Whether assignment replaces everything, see CIMValue. */
  static constexpr bool assignsEverything = isOneOf<T, short, bool, CIMInstance>;

  CIMValue() = default;

  /** Makes a value of one element. */
  template <typename U = T, std::enable_if_t<CIMValue<U>::hasScalarConstructor, int> = 0>
  CIMValue(const T& value, bool isArray, bool isNull)
      : m_values(1, value), m_isArray(isArray ? 1U : 0U), m_isNull(isNull) {}

  /** Makes a value of all elements in order. */
  template <typename U = T, std::enable_if_t<CIMValue<U>::hasListConstructor, int> = 0>
  CIMValue(const std::vector<T>& values, bool isArray, bool isNull)
      : m_values(values), m_isArray(isArray ? 1U : 0U), m_isNull(isNull) {}
  template <typename U = T, std::enable_if_t<CIMValue<U>::hasListConstructor, int> = 0>
  CIMValue(std::vector<T>&& values, bool isArray, bool isNull)
      : m_values(std::move(values)), m_isArray(isArray ? 1U : 0U), m_isNull(isNull) {}

  CIMValue(const CIMValue&) = default;
  CIMValue(CIMValue&&) noexcept = default;
  ~CIMValue() = default;

  CIMValue& operator=(const CIMValue& other) {
    if (this != &other) {
      assign(std::vector<T>(other.m_values), other.m_isArray, other.m_isNull);
    }
    return *this;
  }
  CIMValue& operator=(CIMValue&& other) noexcept {
    if (this != &other) {
      assign(std::vector<T>(std::move(other.m_values)), other.m_isArray, other.m_isNull);
    }
    return *this;
  }

  // Each reader is for one type of value and replaces the caller's list with a copy of the elements.
  void getBooleanData(std::vector<bool>& out) const { copyTo(out); }
  void getsint8Data(std::vector<signed char>& out) const { copyTo(out); }
  void getuint8Data(std::vector<unsigned char>& out) const { copyTo(out); }
  void getsint16Data(std::vector<short>& out) const { copyTo(out); }
  void getuint16Data(std::vector<unsigned short>& out) const { copyTo(out); }
  void getsint32Data(std::vector<int>& out) const { copyTo(out); }
  void getsint64Data(std::vector<long long>& out) const { copyTo(out); }
  void getStringData(std::vector<std::string>& out) const { copyTo(out); }
  void getObjPathData(std::vector<CIMObjectPath>& out) const { copyTo(out); }
  void getInstanceData(std::vector<CIMInstance>& out) const { copyTo(out); }
  /** @return a copy of the elements of an unsigned int value. */
  std::vector<T> getuint32Data() const {
    static_assert(std::is_same_v<T, unsigned int>, "getuint32Data reads values of unsigned int");
    return m_values;
  }
  /** @return a copy of the elements of an unsigned long long value. */
  std::vector<T> getuint64Data() const {
    static_assert(std::is_same_v<T, unsigned long long>, "getuint64Data reads values of unsigned long long");
    return m_values;
  }

  std::vector<T> m_values;      ///< the elements
  std::uint32_t m_isArray = 0;  ///< not 0: a CIM array
  bool m_isNull = false;        ///< CIM NULL

private:
  // The arguments are copies, since the source may be part of an element that is replaced here.
  void assign(std::vector<T>&& values, std::uint32_t isArray, bool isNull) {
    if constexpr (assignsEverything) {
      m_isArray = isArray;
      m_values = std::move(values);
    } else if (!values.empty()) {
      m_values = std::move(values);
    }
    m_isNull = isNull;
  }

  // By copy and swap: assigning a list to a list would assign element to element.
  template <typename U>
  void copyTo(std::vector<U>& out) const {
    static_assert(std::is_same_v<T, U>, "this reader belongs to another type of value");
    std::vector<U> copy(m_values);
    out.swap(copy);
  }
};

}  // namespace tvp::cim::fwf

#endif
