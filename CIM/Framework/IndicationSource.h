#ifndef FRAMEWORK_INDICATIONSOURCE_H
#define FRAMEWORK_INDICATIONSOURCE_H

#include "CIM/Framework/CIMProperty.h"

#include <string>
#include <vector>

namespace tvp::cim::fwf {

/**
 * Turns one storage event into an indication of the class TVP_CIMIndication and hands it to the
 * framework's facade for delivery. Declared here and defined with the concrete plugins, so that the
 * event manager, which stands below them, need not know them.
 *
 * @param timeText the local time, not used by the indication
 * @param eventKeys the event's properties, see TVP_CIMIndication::EventNotify
 * Failures are logged and swallowed.
 */
void raiseIndication(const std::string& timeText, std::vector<CIMProperty>& eventKeys);

}  // namespace tvp::cim::fwf

#endif
