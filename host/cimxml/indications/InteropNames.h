// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_INDICATIONS_INTEROPNAMES_H
#define HOST_CIMXML_INDICATIONS_INTEROPNAMES_H

#include "host/schema/Schema.h"
#include "host/schema/Value.h"

#include <string>

namespace tvp::host::cimxml {

/** The interop namespace, as it is spelt in paths. */
constexpr char INTEROP_NAMESPACE[] = "root/interop";
constexpr char SYSTEM_CLASS[] = "CIM_ComputerSystem";
constexpr char FILTER_CLASS[] = "CIM_IndicationFilter";
constexpr char HANDLER_CLASS[] = "CIM_ListenerDestination";
constexpr char SUBSCRIPTION_CLASS[] = "CIM_IndicationSubscription";

/** Whether a namespace is the interop namespace, by one of the names that clients use for it. */
bool isInteropName(const std::string& nameSpace);

/** The name of this computer. */
std::string systemName();

/** An instance of a class of the interop namespace with every property null. */
Instance emptyInteropInstance(const Schema& schema, const std::string& className);

/** Sets the keys of the path from the properties. */
void takeKeys(Instance& instance, const SchemaClass& schemaClass);

/**
 * A path as this server spells it, so that equal paths compare equal: the namespace, also of the paths in its
 * keys, is INTEROP_NAMESPACE for each of its names and for none; there is no host; a reference that was sent
 * as a text is one.
 */
ObjectPath interopPath(ObjectPath path);

}  // namespace tvp::host::cimxml

#endif
