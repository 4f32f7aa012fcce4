// SPDX-License-Identifier: Apache-2.0
#ifndef BACKEND_EVENTINDICATION_H
#define BACKEND_EVENTINDICATION_H

#include "CIM/Framework/CIMProperty.h"

#include <string>
#include <vector>

namespace tvp::cim::fwf {

/**
 * Makes an indication from an event and passes it to the framework. Declared here, where events originate,
 * and defined with the indication class in providers/, which is above this layer.
 * @param localTime text of the local time
 * @param eventKeys eventTime, eventCode, eventType, eventDesc, Id and ActionId
 */
void notifyEventIndication(const std::string& localTime, std::vector<CIMProperty>& eventKeys);

}  // namespace tvp::cim::fwf

#endif
