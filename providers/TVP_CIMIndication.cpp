// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/FrameworkFacade.h"
#include "backend/EventIndication.h"
#include "oslib/KVSLog.h"
#include "oslib/KVSSystem.h"
#include "providers/ModelPlugin.h"

#include <array>
#include <utility>

namespace tvp::cim::fwf {

/**
 * The indication class. It serves no instances and is not in the registry: the event manager creates an
 * object for every event, which composes the indication and passes it to the framework's facade.
 */
class TVP_CIMIndication : public ModelPlugin {
public:
  void enumerateInstances(CIMObjectPath&, std::vector<CIMInstance>&, bool) override {}

  /** Replaces keys with the event keys. @return true */
  bool getKeysFromEventKeys(const std::vector<CIMProperty>& eventKeys, std::vector<CIMProperty>& keys);

  /**
   * Composes the indication of an event, in namespace root/PG_InterOp, and has it delivered. Failures are
   * logged; the event is then lost.
   * @param timeText unused
   * @param eventKeys eventTime and eventDesc (string), eventCode, eventType, Id and ActionId (uint32)
   */
  void EventNotify(const std::string& timeText, std::vector<CIMProperty>& eventKeys);
};

void notifyEventIndication(const std::string& localTime, std::vector<CIMProperty>& eventKeys) {
  TVP_CIMIndication().EventNotify(localTime, eventKeys);
}

bool TVP_CIMIndication::getKeysFromEventKeys(
    const std::vector<CIMProperty>& eventKeys, std::vector<CIMProperty>& keys) {
  KvsTrace("Enter TVP_CIMIndication :: getKeysFromEventKeys()");
  keys = std::vector<CIMProperty>(eventKeys);  // whole: assigning to a property may keep its old values
  // COMPAT: "with error" is written even on success; logs are searched for the line.
  KvsTrace("Exit TVP_CIMIndication :: getKeysFromEventKeys() with error");
  return true;
}

void TVP_CIMIndication::EventNotify(const std::string&, std::vector<CIMProperty>& eventKeys) {
  KvsTrace("Enter TVP_CIMIndication :: EventNotify()");
  std::array<char, 256> host{};
  KvsGetHostName(host.data(), host.size());
  host.back() = '\0';
  FrameworkFacade* facade = FrameworkFacade::getInstance();
  if (facade == nullptr) {
    KvsLogMsg(KVS_LOG_DEBUG, "Framework Facade not available");
    return;
  }
  if (eventKeys.empty()) {
    KvsLogMsg(KVS_LOG_DEBUG, "ViewClass Key corrupted");
    return;
  }
  std::vector<CIMProperty> keys;
  if (!getKeysFromEventKeys(eventKeys, keys)) {
    KvsLogMsg(KVS_LOG_DEBUG, "Failed to extract key Properties");
    return;
  }
  // COMPAT: composed and left out; subscribers' filters are written for the six properties below.
  const CIMProperty sourceHost = makeProperty("SourceInstanceHost", std::string(host.data()));
  const CIMProperty severity = makeProperty<unsigned short>("PerceivedSeverity", 6);

  const CIMObjectPath path(host.data(), "root/PG_InterOp", "TVP_CIMIndication", std::move(keys));
  CIMInstance indication;
  indication.setPath(path);
  for (const char* name : {"eventTime", "eventCode", "eventType", "eventDesc", "Id", "ActionId"}) {
    indication.addProperty(path.getKey(name));
  }
  if (facade->notify(indication)) {
    KvsLogMsg(
        KVS_LOG_DEBUG, "Successfully Delivered Indication of classname = %s", indication.className().c_str());
  } else {
    KvsLogMsg(
        KVS_LOG_ERROR, "Failed To Deliver Indication of classname = %s", indication.className().c_str());
  }
  KvsTrace("Exit TVP_CIMIndication :: EventNotify()");
}

}  // namespace tvp::cim::fwf
