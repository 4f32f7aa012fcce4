// SPDX-License-Identifier: Apache-2.0
#include "backend/TarvexProLogicalDevice.h"

#include "backend/BackendResult.h"
#include "backend/tvpCIMInstanceWrapper.h"
#include "oslib/KVSMethodTrace.h"
#include "voltvk/LogicalDevice.h"

namespace tvp::cim::fwf {

unsigned int
TarvexProLogicalDevice::InsertLogicalDriveInfo(LogicalDevice* drive, tvpCIMInstanceWrapper& wrapper) {
  tvpMethodTrace trace("TarvexProLogicalDevice::InsertLogicalDriveInfo");
  if (drive == nullptr) {
    return BACKEND_FAILED;
  }
  wrapper.tvpAddProp<std::string>("CreationClassName", "TVP_LogicalDevice", true, true);
  wrapper.tvpAddProp<std::string>("DeviceName", drive->getDeviceName(), true, true);
  wrapper.tvpAddProp<std::string>("SerialNumber", drive->getSerialNumber(), false, false);
  wrapper.tvpAddProp<std::string>("WWID", drive->getWwid(), false, false);
  wrapper.tvpAddProp<std::string>("Vendor", drive->getVendor(), false, false);
  wrapper.tvpAddProp<std::string>("Model", drive->getModel(), false, false);
  wrapper.tvpAddProp<unsigned long long>("CapacityInSectors", drive->getCapacityInSectors(), false, false);
  wrapper.tvpAddProp<unsigned short>("DeviceNumber", drive->getDeviceNumber(), false, false);
  wrapper.tvpAddProp<unsigned char>("DeviceType", drive->getDeviceType(), false, false);
  wrapper.tvpAddProp<unsigned char>("DeviceProperty", drive->getDeviceProperty(), false, false);
  wrapper.tvpAddProp<bool>("IsBootable", drive->isBootable(), false, false);
  wrapper.tvpAddProp<bool>("HasPartition", drive->hasPartition(), false, false);
  wrapper.tvpAddProp<bool>("isUsedByTarvexPro", drive->isUsed(), false, false);
  wrapper.tvpAddProp<unsigned char>("InterfaceType", drive->getInterfaceType(), false, false);
  wrapper.tvpAddProp<unsigned char>("LD_Status", drive->getStatus(), false, false);
  return BACKEND_DONE;
}

}  // namespace tvp::cim::fwf
