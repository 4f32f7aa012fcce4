// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/PropertySlots.h"

#include "CIM/Framework/CIMInstance.h"
#include "CIM/Framework/CIMObjectPath.h"

namespace tvp::cim::fwf {

PropertySlots::PropertySlots() = default;
PropertySlots::PropertySlots(const PropertySlots& other)
    : m_content(other.m_content), m_isArray(other.m_isArray), m_isNull(other.m_isNull),
      m_further(other.m_further ? std::make_unique<PropertySlots>(*other.m_further) : nullptr) {}
PropertySlots::PropertySlots(PropertySlots&& other) noexcept = default;
PropertySlots& PropertySlots::operator=(PropertySlots&& other) noexcept = default;
PropertySlots::~PropertySlots() = default;

template <typename... T>
void PropertySlots::assignEach(const PropertySlots& other) {
  (assign(other.get<T>()), ...);
}

void PropertySlots::assignAll(const PropertySlots& other) {
  assignEach<
      std::string, unsigned char, signed char, unsigned short, short, unsigned int, int, float, double,
      unsigned long long, long long, bool, CIMObjectPath, CIMInstance>(other);
}

}  // namespace tvp::cim::fwf
