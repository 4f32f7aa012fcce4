// SPDX-License-Identifier: Apache-2.0
#include "text/Size.h"
#include "voltvk/Limits.h"
#include "voltvk/ctl/Commands.h"
#include "voltvk/engine/contract/State.h"
#include "voltvk/engine/drives/DriveRegistry.h"

#include <CLI/CLI.hpp>

#include <stdexcept>

namespace voltvk::ctl {

namespace {

struct DriveOptions {
  std::string type;
  std::string size;
  VirtualDriveSpec spec;
  std::uint16_t number = 0;
};

Json listDrives(State& state) {
  Json list = Json::array();
  for (const RaidObject* object : state.snapshot()->objects()) {
    const auto* drive = dynamic_cast<const LogicalDevice*>(object);
    if (drive == nullptr) {
      continue;
    }
    const bool isVirtual = (drive->getDeviceProperty() & TVK_PROPERTY_VIRTUAL) != 0;
    list.push_back(
        {{"number", drive->getDeviceNumber()},
         {"name", drive->getDeviceName()},
         {"type", drive->getDeviceType() == TVK_DEVICE_SSD ? "ssd" : "hdd"},
         {"origin", isVirtual ? "virtual" : "host"},
         {"sectors", drive->getCapacityInSectors()},
         {"size", tvp::text::formatSectors(drive->getCapacityInSectors())},
         {"status", drive->getStatus() == TVK_DEVICE_ONLINE ? "online" : "missing"},
         {"used", drive->isUsed()},
         {"free", *drive->getObstacle() == '\0'},
         {"obstacle", *drive->getObstacle() == '\0' ? Json(nullptr) : Json(drive->getObstacle())},
         {"bootable", drive->isBootable()},
         {"partitioned", drive->hasPartition()},
         {"model", drive->getModel()},
         {"serial", drive->getSerialNumber()}});
  }
  return list;
}

void addDrive(const DriveOptions& options, const Context& context) {
  VirtualDriveSpec spec = options.spec;
  spec.type = options.type == "ssd" ? TVK_DEVICE_SSD : TVK_DEVICE_HDD;
  spec.sectors = tvp::text::parseSectors(options.size);
  std::uint16_t number = 0;
  context.state()->change(
      [&](Connection& connection) { number = DriveRegistry(connection).addVirtual(spec); });
  context.report({{"number", number}}, std::to_string(number));
}

void removeDrive(std::uint16_t number, const Context& context) {
  context.state()->change([&](Connection& connection) { DriveRegistry(connection).removeVirtual(number); });
  context.report({{"number", number}}, "drive " + std::to_string(number) + " removed");
}

}  // namespace

void addDriveCommands(CLI::App& app, Context& context) {
  CLI::App* drive = app.add_subcommand("drive", "List drives, add and remove virtual ones");
  drive->require_subcommand(1);
  drive->add_subcommand("list", "List the drives of the machine and the virtual ones")->callback([&context] {
    context.output.writeList(
        listDrives(*context.state()),
        {{"number", "NUMBER", true},
         {"name", "NAME", false, true},
         {"type", "TYPE", false, true},
         {"size", "SIZE", true, true},
         {"status", "STATUS", false, true},
         {"free", "FREE", false, true},
         {"obstacle", "WHY NOT", false, true},
         {"origin", "ORIGIN"},
         {"model", "MODEL"},
         {"serial", "SERIAL"}},
        "No drives.");
  });

  auto options = std::make_shared<DriveOptions>();
  CLI::App* add = drive->add_subcommand("add", "Add a virtual drive and print its number");
  add->add_option("--type", options->type, "hdd or ssd")->required()->check(CLI::IsMember({"hdd", "ssd"}));
  add->add_option("--size", options->size, "Size with a unit, such as 100GiB")->required();
  add->add_option("--model", options->spec.model, "Model text");
  add->add_option("--serial", options->spec.serial, "Serial number, unlike those of other virtual drives");
  add->callback([options, &context] { addDrive(*options, context); });

  CLI::App* remove = drive->add_subcommand("remove", "Remove a virtual drive that no pool uses");
  remove->add_option("NUMBER", options->number, "Number of the drive")
      ->required()
      ->check(CLI::Range(0U, TVK_LARGEST_DEVICE_NUMBER));
  remove->callback([options, &context] { removeDrive(options->number, context); });
}

}  // namespace voltvk::ctl
