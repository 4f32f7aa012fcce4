// SPDX-License-Identifier: Apache-2.0
#ifndef CIM_FRAMEWORK_CIMPROPERTY_H
#define CIM_FRAMEWORK_CIMPROPERTY_H

#include "CIM/Framework/CIMValue.h"
#include "CIM/Framework/PropertySlots.h"

#include <cstdint>
#include <string>
#include <type_traits>

namespace tvp::cim::fwf {

/** The kinds of CIM data in alphabetical order; scalars are even, their arrays odd. */
enum Primitive_DataType : std::uint32_t {
  PDT_BOOLEAN = 0,
  PDT_BOOLEAN_ARRAY = 1,
  PDT_CHAR16 = 2,
  PDT_CHAR16_ARRAY = 3,
  PDT_DATETIME = 4,
  PDT_DATETIME_ARRAY = 5,
  PDT_REAL32 = 6,
  PDT_REAL32_ARRAY = 7,
  PDT_REAL64 = 8,
  PDT_REAL64_ARRAY = 9,
  PDT_SINT16 = 10,
  PDT_SINT16_ARRAY = 11,
  PDT_SINT32 = 12,
  PDT_SINT32_ARRAY = 13,
  PDT_SINT64 = 14,
  PDT_SINT64_ARRAY = 15,
  PDT_SINT8 = 16,
  PDT_SINT8_ARRAY = 17,
  PDT_STRING = 18,
  PDT_STRING_ARRAY = 19,
  PDT_UINT16 = 20,
  PDT_UINT16_ARRAY = 21,
  PDT_UINT32 = 22,
  PDT_UINT32_ARRAY = 23,
  PDT_UINT64 = 24,
  PDT_UINT64_ARRAY = 25,
  PDT_UINT8 = 26,
  PDT_UINT8_ARRAY = 27,
  PDT_REFERENCE = 28,
  PDT_REFERENCE_ARRAY = 29,
  PDT_INSTANCE = 30,
  PDT_INSTANCE_ARRAY = 31
};

/**
 * A named value: a property, a key binding or a method argument. The type code says which of the value slots
 * holds the value; the others stay empty. Everything is owned by value, deliberately without sharing or
 * reference counting between copies, so that copies may be used on any thread and the cost of each is
 * visible.
 *
 * Assignment replaces name, type and flags and then assigns every slot by the rule of its CIMValue, so an
 * empty slot of the source can leave elements in the target. Containers of properties that must end up equal
 * to their source are therefore replaced as a whole, never element by element.
 *
 * Include CIMObjectPath.h or CIMInstance.h to use the slots of those types. Different properties may be used
 * by different threads; a single property only by one thread at a time while it changes.
 */
class CIMProperty {
public:
  /** An empty name, all slots empty, type boolean, no flags. */
  CIMProperty();

  /**
   * A property with its value; instantiated for all types of value except long long (a sint64 is
   * only ever copied in). Whether the type agrees with T is not checked.
   */
  template <typename T, std::enable_if_t<!std::is_same_v<T, long long>, int> = 0>
  CIMProperty(std::string name, CIMValue<T> value, bool isKey, Primitive_DataType type, bool extraFlag);

  CIMProperty(const CIMProperty& other);
  CIMProperty(CIMProperty&& other) noexcept;
  CIMProperty& operator=(const CIMProperty& other);
  ~CIMProperty();

  std::string getName() const { return m_name; }
  const std::string& name() const noexcept { return m_name; }
  void setName(std::string name) { m_name = std::move(name); }

  Primitive_DataType getType() const noexcept { return m_type; }
  void setType(Primitive_DataType type) noexcept { m_type = type; }

  bool isKey() const noexcept { return m_isKey; }
  void setKey(bool isKey) noexcept { m_isKey = isKey; }
  bool extraFlag() const noexcept { return m_extraFlag; }

  // Copies of the slots. The type is not checked: the wrong slot reads as an empty value.
  CIMValue<bool> getBoolValue() const;
  CIMValue<signed char> getSint8Value() const;
  CIMValue<unsigned char> getUint8Value() const;
  CIMValue<short> getSint16Value() const;
  CIMValue<unsigned short> getUint16Value() const;
  CIMValue<int> getSint32Value() const;
  CIMValue<unsigned int> getUint32Value() const;
  CIMValue<long long> getSint64Value() const;
  CIMValue<unsigned long long> getUint64Value() const;
  CIMValue<std::string> getStringValue() const;
  CIMValue<CIMObjectPath> getObjectPathValue() const;
  CIMValue<CIMInstance> getInstanceValue() const;

  // The same slots in place, valid as long as the property exists unchanged.
  ValueView<std::string> stringSlot() const noexcept { return slot<std::string>(); }
  ValueView<unsigned char> uint8Slot() const noexcept { return slot<unsigned char>(); }
  ValueView<unsigned int> uint32Slot() const noexcept { return slot<unsigned int>(); }
  ValueView<unsigned long long> uint64Slot() const noexcept { return slot<unsigned long long>(); }
  ValueView<CIMObjectPath> objectPathSlot() const noexcept { return slot<CIMObjectPath>(); }
  ValueView<CIMInstance> instanceSlot() const noexcept { return slot<CIMInstance>(); }

  /** The slot of the element type T, like stringSlot() for std::string. */
  template <typename T>
  ValueView<T> slot() const noexcept {
    return m_slots.view<T>();
  }

  /**
   * Copies the slot that belongs to the type from another property; name, type and flags stay.
   * @return 1
   * @throws CIMException code 1 for the types 2, 3, 5 to 9 and from 29 on, which cannot be copied.
   */
  int setPropValue(Primitive_DataType type, const CIMProperty& source);

  /**
   * Whether name (exactly), type, key flag and the elements agree. Properties of the types 2 to 9 and above
   * 28 are unequal to everything, themselves included. The array, null and extra flags are ignored.
   */
  bool equals(const CIMProperty& other) const;

  /** Like equals, but ignores names and key flags. */
  bool subclassEqualsViewclass(const CIMProperty& other) const;

private:
  friend struct SlotFiller;  // for the tests: nothing in the system fills a long long slot by itself

  bool equalValue(const CIMProperty& other) const;

  std::string m_name;
  PropertySlots m_slots;
  Primitive_DataType m_type = PDT_BOOLEAN;
  bool m_isKey = false;
  bool m_extraFlag = false;
};

}  // namespace tvp::cim::fwf

#endif
