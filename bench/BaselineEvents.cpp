// SPDX-License-Identifier: Apache-2.0
#include "bench/Baseline.h"
#include "voltvk/Specs.h"
#include "voltvk/TvkAdapter.h"
#include "voltvk/VolEvent.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace bench {
namespace {

const CMPIContext* threadContext = nullptr;

void deliver(const VolEvent& event) {
  char time[32];
  std::time_t seconds = event.time;
  std::tm local{};
  localtime_r(&seconds, &local);
  std::strftime(time, sizeof time, "%m/%d/%Y %H:%M:%S", &local);
  char digits[9];
  std::snprintf(digits, sizeof digits, "%X", event.code);
  const auto code = static_cast<CMPIUint32>(std::strtoul(digits, nullptr, 10));

  constexpr char NAME_SPACE[] = "root/PG_InterOp";
  CBAttachThread(broker, threadContext);
  CMPIGcStat* mark = broker->mft->mark(broker, nullptr);
  CMPIInstance* indication = newInstance(NAME_SPACE, "TVP_CIMIndication", [&](CMPIObjectPath* path) {
    addKey(path, "eventTime", time);
    addKey(path, "eventDesc", event.description);
  });
  setText(indication, "eventTime", time);
  setUint32(indication, "eventCode", code);
  setUint32(indication, "eventType", event.type);
  setText(indication, "eventDesc", event.description);
  setUint32(indication, "Id", event.id);
  setUint32(indication, "ActionId", event.actionId);
  CBDeliverIndication(broker, threadContext, NAME_SPACE, indication);
  CMRelease(indication);
  broker->mft->release(broker, mark);
}

CMPIStatus cleanUp(CMPIIndicationMI*, const CMPIContext*, CMPIBoolean) {
  return DONE;
}
CMPIStatus authorize(
    CMPIIndicationMI*, const CMPIContext*, const CMPISelectExp*, const char*, const CMPIObjectPath*,
    const char*) {
  return DONE;
}
CMPIStatus
mustPoll(CMPIIndicationMI*, const CMPIContext*, const CMPISelectExp*, const char*, const CMPIObjectPath*) {
  return DONE;
}
CMPIStatus activate(
    CMPIIndicationMI*, const CMPIContext* context, const CMPISelectExp*, const char*, const CMPIObjectPath*,
    CMPIBoolean) {
  threadContext = CBPrepareAttachThread(broker, context);
  return DONE;
}
CMPIStatus deActivate(
    CMPIIndicationMI*, const CMPIContext*, const CMPISelectExp*, const char*, const CMPIObjectPath*,
    CMPIBoolean) {
  return DONE;
}
CMPIStatus enable(CMPIIndicationMI*, const CMPIContext*) {
  return DONE;
}

CMPIIndicationMIFT table = {CMPIVersion200, CMPIVersion200, "benchBaseline", cleanUp, authorize,
                            mustPoll,       activate,       deActivate,      enable,  enable};
CMPIIndicationMI interface = {nullptr, &table};

}  // namespace
}  // namespace bench

extern "C" {
__attribute__((visibility("default"))) CMPIIndicationMI*
benchBaseline_Create_IndicationMI(const CMPIBroker* given, const CMPIContext*, CMPIStatus*) {
  bench::broker = given;
  return &bench::interface;
}

/** Fetches the new events and delivers each. */
__attribute__((visibility("default"))) void benchPollOnce() {
  VolEventCollection events(0, 8, 0);
  RaidObject* root = bench::library().getRootObject();
  auto* adapter = static_cast<TvkAdapter*>(root->getObject(0));
  if (adapter == nullptr) {
    return;
  }
  adapter->getEvents(events);
  for (long index = 0; index < events.count(); ++index) {
    bench::deliver(*events.Obj_P(index));
  }
  root->isPolicyEngineRunning();
}
}
