// SPDX-License-Identifier: Apache-2.0
#ifndef CIM_FRAMEWORK_PROPERTYSLOTS_H
#define CIM_FRAMEWORK_PROPERTYSLOTS_H

#include "CIM/Framework/CIMValue.h"
#include "CIM/Framework/ElementView.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace tvp::cim::fwf {

/** Elements of one type in a heap block of their own, which is copied with them. */
template <typename T>
class ElementBlock {
public:
  explicit ElementBlock(const std::vector<T>& elements) : ElementBlock(elements.begin(), elements.size()) {}
  ElementBlock(const ElementBlock& other) : ElementBlock(other.data(), other.size()) {}
  ElementBlock(ElementBlock&& other) noexcept
      : m_elements(std::move(other.m_elements)), m_size(std::exchange(other.m_size, 0)) {}
  ElementBlock& operator=(const ElementBlock& other) = delete;
  ElementBlock& operator=(ElementBlock&& other) noexcept {
    m_elements.swap(other.m_elements);
    std::swap(m_size, other.m_size);
    return *this;
  }
  ~ElementBlock() = default;

  const T* data() const noexcept { return m_elements.get(); }
  std::size_t size() const noexcept { return m_size; }

private:
  template <typename Iterator>
  ElementBlock(Iterator first, std::size_t size)
      : m_elements(size == 0 ? nullptr : std::make_unique<T[]>(size)), m_size(size) {
    std::copy_n(first, size, m_elements.get());
  }

  std::unique_ptr<T[]> m_elements;
  std::size_t m_size;
};

/**
 * The values of a property: seen from outside, one slot for each type of value, of which nearly always just
 * one is in use. A slot takes space only while it has elements or flags: the first one in this object,
 * further ones on the heap. A single element that is neither a path nor an instance is stored in the slot
 * itself, so that copying a number allocates nothing. Copies share nothing.
 *
 * CIMObjectPath and CIMInstance need to be complete only where slots are copied, moved, destroyed or changed.
 */
class PropertySlots {
public:
  PropertySlots();
  PropertySlots(const PropertySlots& other);
  PropertySlots(PropertySlots&& other) noexcept;
  PropertySlots& operator=(const PropertySlots& other) = delete;
  PropertySlots& operator=(PropertySlots&& other) noexcept;
  ~PropertySlots();

  /** A view of the value in the slot of T; empty if the slot is not in use. */
  template <typename T>
  ValueView<T> view() const noexcept;

  /** A copy of the value in the slot of T. */
  template <typename T>
  CIMValue<T> get() const;

  /** Assigns a value to the slot of T, by the rule of CIMValue<T>. */
  template <typename T>
  void assign(CIMValue<T> value);

  /** Assigns every slot of the other, used or not, to the slot of the same type. */
  void assignAll(const PropertySlots& other);

private:
  /** The content of a slot: nothing, one element, or any number of elements. */
  using Content = std::variant<
      std::monostate, std::string, unsigned char, signed char, unsigned short, short, unsigned int, int,
      float, double, unsigned long long, long long, bool, ElementBlock<std::string>,
      ElementBlock<unsigned char>, ElementBlock<signed char>, ElementBlock<unsigned short>,
      ElementBlock<short>, ElementBlock<unsigned int>, ElementBlock<int>, ElementBlock<float>,
      ElementBlock<double>, ElementBlock<unsigned long long>, ElementBlock<long long>, ElementBlock<bool>,
      ElementBlock<CIMObjectPath>, ElementBlock<CIMInstance>>;

  template <typename T>
  static constexpr bool isHeldSingly = !isOneOf<T, CIMObjectPath, CIMInstance>;

  template <typename T>
  static Content contentOf(std::vector<T>&& elements);

  /** Whether this slot itself, not a further one, is that of T. */
  template <typename T>
  bool holds() const noexcept;

  /** The slot of T; a new, empty one if none is in use. */
  template <typename T>
  PropertySlots& slotFor();

  /** Takes the slot of T out of use. */
  template <typename T>
  void remove() noexcept;

  template <typename... T>
  void assignEach(const PropertySlots& other);

  Content m_content;  ///< empty only while no slot is in use
  std::uint32_t m_isArray = 0;
  bool m_isNull = false;
  std::unique_ptr<PropertySlots> m_further;
};

template <typename T>
bool PropertySlots::holds() const noexcept {
  if constexpr (isHeldSingly<T>) {
    if (std::holds_alternative<T>(m_content)) {
      return true;
    }
  }
  return std::holds_alternative<ElementBlock<T>>(m_content);
}

template <typename T>
ValueView<T> PropertySlots::view() const noexcept {
  for (const PropertySlots* slot = this; slot != nullptr; slot = slot->m_further.get()) {
    if constexpr (isHeldSingly<T>) {
      if (const T* element = std::get_if<T>(&slot->m_content)) {
        return {{element, 1}, slot->m_isArray, slot->m_isNull};
      }
    }
    if (const auto* block = std::get_if<ElementBlock<T>>(&slot->m_content)) {
      return {{block->data(), block->size()}, slot->m_isArray, slot->m_isNull};
    }
  }
  return {};
}

template <typename T>
CIMValue<T> PropertySlots::get() const {
  const ValueView<T> seen = view<T>();
  CIMValue<T> value;
  value.m_values = seen.m_values;
  value.m_isArray = seen.m_isArray;
  value.m_isNull = seen.m_isNull;
  return value;
}

template <typename T>
PropertySlots::Content PropertySlots::contentOf(std::vector<T>&& elements) {
  if constexpr (isHeldSingly<T>) {
    if (elements.size() == 1) {
      return Content(std::in_place_type<T>, std::move(elements.front()));
    }
  }
  return Content(std::in_place_type<ElementBlock<T>>, elements);
}

template <typename T>
PropertySlots& PropertySlots::slotFor() {
  PropertySlots* slot = this;
  while (!slot->holds<T>() && !std::holds_alternative<std::monostate>(slot->m_content)) {
    if (!slot->m_further) {
      slot->m_further = std::make_unique<PropertySlots>();
    }
    slot = slot->m_further.get();
  }
  return *slot;
}

template <typename T>
void PropertySlots::remove() noexcept {
  PropertySlots* slot = this;
  while (slot != nullptr && !slot->holds<T>()) {
    slot = slot->m_further.get();
  }
  if (slot != nullptr) {
    const std::unique_ptr<PropertySlots> next = std::move(slot->m_further);
    *slot = next ? std::move(*next) : PropertySlots();
  }
}

template <typename T>
void PropertySlots::assign(CIMValue<T> value) {
  CIMValue<T> assigned = get<T>();
  assigned = std::move(value);
  if (assigned.m_values.empty() && assigned.m_isArray == 0 && !assigned.m_isNull) {
    remove<T>();
    return;
  }
  Content content = contentOf(std::move(assigned.m_values));
  PropertySlots& slot = slotFor<T>();
  slot.m_content = std::move(content);
  slot.m_isArray = assigned.m_isArray;
  slot.m_isNull = assigned.m_isNull;
}

}  // namespace tvp::cim::fwf

#endif
