// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/storage/DriveCommands.h"

namespace tvp::host::tvpcim {

void DriveCommands::addTo(CLI::App& app) {
  addVerb(app, "drives", "List the drives", "", [this] { list(); });
}

void DriveCommands::list() {
  const SchemaClass& drives = classOf(DRIVE);
  printAll(
      DRIVE,
      {plainColumn("NUMBER", "DeviceNumber", true), plainColumn("DEVICE", "DeviceName"),
       codeColumn("KIND", drives, "DeviceType"), sizeColumn("CAPACITY", "CapacityInSectors"),
       flagColumn("IN USE", "isUsedByTarvexPro"), codeColumn("STATUS", drives, "LD_Status"),
       codeColumn("INTERFACE", drives, "InterfaceType"), flagColumn("PARTITIONS", "HasPartition"),
       flagColumn("BOOTS", "IsBootable"), plainColumn("MODEL", "Model"),
       onlyWide(plainColumn("VENDOR", "Vendor")), onlyWide(plainColumn("SERIAL", "SerialNumber")),
       onlyWide(plainColumn("WWID", "WWID")), onlyWide(codeColumn("PROPERTY", drives, "DeviceProperty"))});
}

}  // namespace tvp::host::tvpcim
