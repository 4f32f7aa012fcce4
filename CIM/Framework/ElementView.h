// SPDX-License-Identifier: Apache-2.0
#ifndef CIM_FRAMEWORK_ELEMENTVIEW_H
#define CIM_FRAMEWORK_ELEMENTVIEW_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <vector>

namespace tvp::cim::fwf {

/** A read-only view of a list of elements, valid as long as its owner exists unchanged. */
template <typename T>
class ElementView {
public:
  using value_type = T;
  using iterator = const T*;
  using const_iterator = const T*;

  ElementView() = default;
  ElementView(const T* first, std::size_t size) : m_first(first), m_size(size) {}

  const T* begin() const noexcept { return m_first; }
  const T* end() const noexcept { return m_first + m_size; }
  std::size_t size() const noexcept { return m_size; }
  bool empty() const noexcept { return m_size == 0; }
  const T& operator[](std::size_t index) const { return m_first[index]; }
  const T& front() const { return *m_first; }
  /** @throws std::out_of_range for an index past the last element. */
  const T& at(std::size_t index) const {
    if (index >= m_size) {
      throw std::out_of_range("ElementView::at");
    }
    return m_first[index];
  }
  /** A copy of the elements. */
  operator std::vector<T>() const { return std::vector<T>(begin(), end()); }

  friend bool operator==(const ElementView& left, const ElementView& right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end());
  }
  friend bool operator==(const ElementView& left, const std::vector<T>& right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end());
  }

private:
  const T* m_first = nullptr;
  std::size_t m_size = 0;
};

/** A read-only view of a CIMValue, with the same names for the same parts. */
template <typename T>
struct ValueView {
  ElementView<T> m_values;
  std::uint32_t m_isArray = 0;
  bool m_isNull = false;
};

}  // namespace tvp::cim::fwf

#endif
