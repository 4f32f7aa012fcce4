// SPDX-License-Identifier: Apache-2.0
// A provider of indications that does everything but end.

#include "cmpift.h"
#include "cmpimacs.h"

namespace {

const CMPIBroker* broker = nullptr;

CMPIStatus success() {
  return {CMPI_RC_OK, nullptr};
}

CMPIStatus failToCleanUp(CMPIIndicationMI* /*mi*/, const CMPIContext* /*context*/, CMPIBoolean /*end*/) {
  return {CMPI_RC_ERR_FAILED, CMNewString(broker, "cannot stop", nullptr)};
}

CMPIStatus authorizeFilter(
    CMPIIndicationMI* /*mi*/, const CMPIContext* /*context*/, const CMPISelectExp* /*filter*/,
    const char* /*className*/, const CMPIObjectPath* /*path*/, const char* /*owner*/) {
  return success();
}

CMPIStatus mustPoll(
    CMPIIndicationMI* /*mi*/, const CMPIContext* /*context*/, const CMPISelectExp* /*filter*/,
    const char* /*className*/, const CMPIObjectPath* /*path*/) {
  return success();
}

CMPIStatus changeFilter(
    CMPIIndicationMI* /*mi*/, const CMPIContext* /*context*/, const CMPISelectExp* /*filter*/,
    const char* /*className*/, const CMPIObjectPath* /*path*/, CMPIBoolean /*firstOrLast*/) {
  return success();
}

CMPIStatus changeDelivery(CMPIIndicationMI* /*mi*/, const CMPIContext* /*context*/) {
  return success();
}

CMPIIndicationMIFT table = {200,      100,          "failingCleanup", failToCleanUp,  authorizeFilter,
                            mustPoll, changeFilter, changeFilter,     changeDelivery, changeDelivery};
CMPIIndicationMI indicationMI = {nullptr, &table};

}  // namespace

extern "C" __attribute__((visibility("default"))) CMPIIndicationMI* tarvexProProvider_Create_IndicationMI(
    const CMPIBroker* hostBroker, const CMPIContext* /*context*/, CMPIStatus* /*status*/) {
  broker = hostBroker;
  return &indicationMI;
}
