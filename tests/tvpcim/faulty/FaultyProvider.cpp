// SPDX-License-Identifier: Apache-2.0
// A provider that breaks rules and says unpleasant things, to see what tvpcim makes of it.

#include "cmpift.h"
#include "cmpimacs.h"

#include <cstring>

namespace {

const CMPIBroker* broker = nullptr;

constexpr CMPIStatus SUCCESS = {CMPI_RC_OK, nullptr};
/** Stands for every function that has nothing to do. */
constexpr auto SUCCEED = [](auto...) { return SUCCESS; };

bool isClass(const CMPIObjectPath* path, const char* name) {
  return std::strcmp(CMGetCharsPtr(CMGetClassName(path, nullptr), nullptr), name) == 0;
}

/** Drives: success without the end of the result. Volumes: one with a name that terminals obey. */
CMPIStatus enumerateInstances(
    CMPIInstanceMI* /*mi*/, const CMPIContext* /*context*/, const CMPIResult* result,
    const CMPIObjectPath* path, const char** /*properties*/) {
  if (isClass(path, "TVP_LogicalDevice")) {
    return SUCCESS;
  }
  CMPIInstance* instance = CMNewInstance(broker, path, nullptr);
  if (isClass(path, "TVP_VirtualVolume")) {
    CMPIValue value{};
    value.uint32 = 1;
    CMSetProperty(instance, "VirtualVolumeId", &value, CMPI_uint32);
    value.string = CMNewString(broker, "v\x1b[2J\xff", nullptr);
    CMSetProperty(instance, "VolumeName", &value, CMPI_string);
  }
  CMReturnInstance(result, instance);
  CMReturnDone(result);
  return SUCCESS;
}

CMPIStatus getInstance(
    CMPIInstanceMI* /*mi*/, const CMPIContext* /*context*/, const CMPIResult* /*result*/,
    const CMPIObjectPath* /*path*/, const char** /*properties*/) {
  return {CMPI_RC_ERR_FAILED, CMNewString(broker, "two\nlines \x1b[2J%s%n", nullptr)};
}

/** Every method succeeds as a call and reports a refusal of the storage library, with its reasons logged. */
CMPIStatus invokeMethod(
    CMPIMethodMI* /*mi*/, const CMPIContext* /*context*/, const CMPIResult* result,
    const CMPIObjectPath* /*path*/, const char* /*method*/, const CMPIArgs* /*input*/, CMPIArgs* output) {
  broker->eft->logMessage(broker, 4, "faulty", "two\nlines \x1b[2J", nullptr);
  broker->eft->logMessage(broker, 4, "faulty", "and more", nullptr);
  CMPIValue value{};
  value.uint32 = 22;
  CMAddArg(output, "RetStat", &value, CMPI_uint32);
  value.uint32 = 0;
  CMReturnData(result, &value, CMPI_uint32);
  CMReturnDone(result);
  return SUCCESS;
}

CMPIInstanceMIFT instanceTable = {200,         100,     "faulty", SUCCEED, nullptr, enumerateInstances,
                                  getInstance, nullptr, nullptr,  nullptr, nullptr};
CMPIMethodMIFT methodTable = {200, 100, "faulty", SUCCEED, invokeMethod};
CMPIInstanceMI instanceMI = {nullptr, &instanceTable};
CMPIMethodMI methodMI = {nullptr, &methodTable};

}  // namespace

extern "C" __attribute__((visibility("default"))) CMPIInstanceMI* tarvexProProvider_Create_InstanceMI(
    const CMPIBroker* hostBroker, const CMPIContext* /*context*/, CMPIStatus* /*status*/) {
  broker = hostBroker;
  return &instanceMI;
}

extern "C" __attribute__((visibility("default"))) CMPIMethodMI* tarvexProProvider_Create_MethodMI(
    const CMPIBroker* hostBroker, const CMPIContext* /*context*/, CMPIStatus* /*status*/) {
  broker = hostBroker;
  return &methodMI;
}
