// SPDX-License-Identifier: Apache-2.0
// A provider of indications that does everything but end.

#include "cmpift.h"
#include "cmpimacs.h"

namespace {

const CMPIBroker* broker = nullptr;

/** Stands for every function that has nothing to do. */
constexpr auto SUCCEED = [](auto...) { return CMPIStatus{CMPI_RC_OK, nullptr}; };

CMPIStatus failToCleanUp(CMPIIndicationMI* /*mi*/, const CMPIContext* /*context*/, CMPIBoolean /*end*/) {
  return {CMPI_RC_ERR_FAILED, CMNewString(broker, "cannot stop", nullptr)};
}

CMPIIndicationMIFT table = {200,     100,     "failingCleanup", failToCleanUp, SUCCEED,
                            SUCCEED, SUCCEED, SUCCEED,          SUCCEED,       SUCCEED};
CMPIIndicationMI indicationMI = {nullptr, &table};

}  // namespace

extern "C" __attribute__((visibility("default"))) CMPIIndicationMI* tarvexProProvider_Create_IndicationMI(
    const CMPIBroker* hostBroker, const CMPIContext* /*context*/, CMPIStatus* /*status*/) {
  broker = hostBroker;
  return &indicationMI;
}
