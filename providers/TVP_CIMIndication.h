// SPDX-License-Identifier: Apache-2.0
#ifndef PROVIDERS_TVP_CIMINDICATION_H
#define PROVIDERS_TVP_CIMINDICATION_H

#include "CIM/Framework/AbstractInstanceProviderPlugin.h"

#include <string>
#include <vector>

namespace tvp::cim::fwf {

/**
 * The indication class. It serves no instances and is not in the registry: the event manager makes an
 * object for every event, which composes the indication and hands it to the framework's facade.
 */
class TVP_CIMIndication : public AbstractInstanceProviderPlugin {
public:
  void enumerateInstances(CIMObjectPath& path, std::vector<CIMInstance>& instances, bool flag) override;
  void enumerateInstanceNames(CIMObjectPath& path, std::vector<CIMObjectPath>& names) override;
  void getKeyAttributes(const CIMInstance& object, std::vector<CIMProperty>& keys) override;
  void getNonKeyAttributes(const CIMInstance& object, std::vector<CIMProperty>& properties) override;
  void getRepositoryObjects(const CIMObjectPath& path, std::vector<CIMInstance>& objects) override;

  /** Replaces keys with the event keys. @return true */
  bool getKeysFromEventKeys(const std::vector<CIMProperty>& eventKeys, std::vector<CIMProperty>& keys);

  /**
   * Composes the indication of an event, in namespace root/PG_InterOp, and has it delivered. What fails
   * is logged; the event is then lost.
   * @param timeText not used
   * @param eventKeys eventTime and eventDesc (string), eventCode, eventType, Id and ActionId (uint32)
   */
  void EventNotify(const std::string& timeText, std::vector<CIMProperty>& eventKeys);
};

}  // namespace tvp::cim::fwf

#endif
