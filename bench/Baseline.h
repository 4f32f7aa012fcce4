// SPDX-License-Identifier: Apache-2.0
#ifndef BENCH_BASELINE_H
#define BENCH_BASELINE_H

#include "cmpimacs.h"
#include "voltvk/TvkLib.h"

/**
 * The least that a provider can do: the broker calls that the product makes for the same request, with the
 * same values, straight from the storage library. It is a yardstick for time, not a product: what the storage
 * library returns is passed on, and a broker that refuses a call is not handled.
 */
namespace bench {

/** What was last passed to the factories. */
extern const CMPIBroker* broker;

/** The storage library's top object, created on first use; it lives as long as the process. */
TvkLib& library();

inline constexpr CMPIStatus DONE{CMPI_RC_OK, nullptr};

/** Sets a text: makes a broker string, passes it to set, and releases it. */
template <typename Set>
void withString(const char* text, Set set) {
  CMPIValue value{};
  value.string = CMNewString(broker, text, nullptr);
  set(&value);
  CMRelease(value.string);
}

inline void addKey(CMPIObjectPath* path, const char* name, const char* text) {
  withString(text, [&](const CMPIValue* value) { CMAddKey(path, name, value, CMPI_string); });
}

inline void setText(CMPIInstance* instance, const char* name, const char* text) {
  withString(text, [&](const CMPIValue* value) { CMSetProperty(instance, name, value, CMPI_string); });
}

/** Sets a number or a boolean through the CMPIValue member that holds it. */
template <auto Member, typename Number>
void setNumber(CMPIInstance* instance, const char* name, CMPIType type, Number number) {
  CMPIValue value{};
  value.*Member = number;
  CMSetProperty(instance, name, &value, type);
}

inline void setUint8(CMPIInstance* instance, const char* name, CMPIUint8 number) {
  setNumber<&CMPIValue::uint8>(instance, name, CMPI_uint8, number);
}
inline void setUint16(CMPIInstance* instance, const char* name, CMPIUint16 number) {
  setNumber<&CMPIValue::uint16>(instance, name, CMPI_uint16, number);
}
inline void setUint32(CMPIInstance* instance, const char* name, CMPIUint32 number) {
  setNumber<&CMPIValue::uint32>(instance, name, CMPI_uint32, number);
}
inline void setUint64(CMPIInstance* instance, const char* name, CMPIUint64 number) {
  setNumber<&CMPIValue::uint64>(instance, name, CMPI_uint64, number);
}
inline void setBoolean(CMPIInstance* instance, const char* name, bool truth) {
  setNumber<&CMPIValue::boolean>(instance, name, CMPI_boolean, static_cast<CMPIBoolean>(truth));
}

/** A new instance on a path that addKeys fills and that is released. */
template <typename AddKeys>
CMPIInstance* newInstance(const char* nameSpace, const char* className, AddKeys addKeys) {
  CMPIObjectPath* path = CMNewObjectPath(broker, nameSpace, className, nullptr);
  addKeys(path);
  CMPIInstance* instance = CMNewInstance(broker, path, nullptr);
  CMRelease(path);
  return instance;
}

}  // namespace bench

#endif
