// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/storage/StorageVerbs.h"

#include <utility>

namespace tvp::host::tvpcim {
namespace {

/** What other use a drive has, as bits of its property "DeviceProperty". */
constexpr std::uint64_t MOUNTED = 8;
constexpr std::uint64_t READ_ONLY = 16;
constexpr std::uint64_t UNSUITABLE = 32;
constexpr std::uint64_t MISSING = 2;  ///< of "LD_Status"

}  // namespace

std::string freedomOf(const Instance& drive) {
  const std::uint64_t property = numberOf(drive, "DeviceProperty");
  // In the order in which creating a pool would refuse it.
  const std::pair<bool, const char*> obstacles[] = {
      {flagOf(drive, "isUsedByTarvexPro"), "belongs to a pool"},
      {numberOf(drive, "LD_Status") == MISSING, "is unplugged"},
      {flagOf(drive, "IsBootable"), "boots this machine"},
      {flagOf(drive, "HasPartition"), "has partitions"},
      {(property & MOUNTED) != 0, "is mounted, used for swap or held by another block device"},
      {(property & READ_ONLY) != 0, "is read-only"},
      {(property & UNSUITABLE) != 0, "holds data or cannot store any"},
  };
  for (const auto& [applies, reason] : obstacles) {
    if (applies) {
      return std::string("no: ") + reason;
    }
  }
  return "yes";
}

namespace {

void listDrives(Tool& tool) {
  const SchemaClass& drives = tool.session().classNamed(Drive::KIND.className);
  printAll(
      tool, Drive::KIND,
      {plainColumn("NUMBER", "DeviceNumber", true), staying(plainColumn("DEVICE", "DeviceName")),
       staying(codeColumn("KIND", drives, "DeviceType")),
       staying(sizeColumn("CAPACITY", "CapacityInSectors")),
       staying(codeColumn("STATUS", drives, "LD_Status")), staying(textColumn("FREE", freedomOf)),
       plainColumn("MODEL", "Model"), codeColumn("INTERFACE", drives, "InterfaceType"),
       onlyWide(plainColumn("VENDOR", "Vendor")), onlyWide(plainColumn("SERIAL", "SerialNumber")),
       onlyWide(plainColumn("WWID", "WWID")), onlyWide(codeColumn("PROPERTY", drives, "DeviceProperty"))});
}

}  // namespace

void addDriveCommands(CLI::App& app, Tool& tool) {
  addVerb(app, tool, "drives", "List the drives", "", [&tool] { listDrives(tool); });
}

}  // namespace tvp::host::tvpcim
