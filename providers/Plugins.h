// SPDX-License-Identifier: Apache-2.0
#ifndef PROVIDERS_PLUGINS_H
#define PROVIDERS_PLUGINS_H

#include "CIM/Framework/AbstractProviderPlugin.h"

// The functions that create the plugin of each CIM class that is served. Each is defined in the source of its
// class and returns a new plugin, which the caller owns.
namespace tvp::cim::fwf {

AbstractProviderPlugin* createTarvexProIdentity();
AbstractProviderPlugin* createLogicalDevice();
AbstractProviderPlugin* createLogicalDevices();
AbstractProviderPlugin* createVirtualPoolMember();
AbstractProviderPlugin* createVirtualPool();
AbstractProviderPlugin* createVirtualPools();
AbstractProviderPlugin* createVirtualVolumeSource();
AbstractProviderPlugin* createVirtualVolume();
AbstractProviderPlugin* createVirtualVolumes();
AbstractProviderPlugin* createTierService();

}  // namespace tvp::cim::fwf

#endif
