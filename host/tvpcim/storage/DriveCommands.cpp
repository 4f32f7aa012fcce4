// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/storage/StorageVerbs.h"

namespace tvp::host::tvpcim {
namespace {

void listDrives(Tool& tool) {
  const SchemaClass& drives = tool.session().classNamed(Drive::KIND.className);
  printAll(
      tool, Drive::KIND,
      {plainColumn("NUMBER", "DeviceNumber", true), plainColumn("DEVICE", "DeviceName"),
       codeColumn("KIND", drives, "DeviceType"), sizeColumn("CAPACITY", "CapacityInSectors"),
       flagColumn("IN USE", "isUsedByTarvexPro"), codeColumn("STATUS", drives, "LD_Status"),
       codeColumn("INTERFACE", drives, "InterfaceType"), flagColumn("PARTITIONS", "HasPartition"),
       flagColumn("BOOTS", "IsBootable"), plainColumn("MODEL", "Model"),
       onlyWide(plainColumn("VENDOR", "Vendor")), onlyWide(plainColumn("SERIAL", "SerialNumber")),
       onlyWide(plainColumn("WWID", "WWID")), onlyWide(codeColumn("PROPERTY", drives, "DeviceProperty"))});
}

}  // namespace

void addDriveCommands(CLI::App& app, Tool& tool) {
  addVerb(app, tool, "drives", "List the drives", "", [&tool] { listDrives(tool); });
}

}  // namespace tvp::host::tvpcim
