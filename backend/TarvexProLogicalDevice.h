// SPDX-License-Identifier: Apache-2.0
#ifndef BACKEND_TARVEXPROLOGICALDEVICE_H
#define BACKEND_TARVEXPROLOGICALDEVICE_H

class LogicalDevice;

namespace tvp::cim::fwf {

class tvpCIMInstanceWrapper;

/** Turns drives of the storage library into CIM instances. Stateless; safe from any thread. */
class TarvexProLogicalDevice {
public:
  /**
   * Appends the properties of a "TVP_LogicalDevice" to the instance; sizes are sectors of 512 bytes.
   * @return BACKEND_DONE; BACKEND_FAILED, adding nothing, for a null drive
   */
  static unsigned int InsertLogicalDriveInfo(LogicalDevice* drive, tvpCIMInstanceWrapper& wrapper);
};

}  // namespace tvp::cim::fwf

#endif
