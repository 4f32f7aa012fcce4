// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/Failure.h"
#include "host/tvpcim/output/Text.h"
#include "host/tvpcim/storage/StorageVerbs.h"
#include "text/Size.h"
#include "text/Trim.h"

#include <algorithm>
#include <memory>

namespace tvp::host::tvpcim {
namespace {

struct PoolOptions {
  std::string pool;  ///< of a pool that is there: its name or identifier
  std::string name;
  std::string description;
  std::string drives;
  std::string tier;
  std::string size;
  std::string chunk = "1MiB";
};

std::uint8_t tierLevelOf(const std::string& word) {
  return word == "ssd" ? Pool::SSD_TIER : Pool::HDD_TIER;
}

/** The tier that fits a drive. */
std::uint8_t tierOfDrive(Tool& tool, std::uint64_t number) {
  const std::optional<Drive> drive = tool.inventory().find<Drive>(static_cast<std::uint32_t>(number));
  return drive && drive->type == Drive::SSD ? Pool::SSD_TIER : Pool::HDD_TIER;
}

/** The drives of "3,4,/dev/sdb". */
Value::List drivesOf(Tool& tool, const std::string& text) {
  std::vector<std::string> words = split(text, ',');
  if (words.size() > LARGEST_DRIVE) {
    throw UsageError(
        "--drives names more than " + std::to_string(LARGEST_DRIVE) + " drives; a pool has fewer");
  }
  for (std::string& word : words) {
    word = text::trimmed(word);
  }
  if (words.empty() || std::find(words.begin(), words.end(), "") != words.end()) {
    throw UsageError(
        "--drives takes drives with a comma between them, such as 3,4, not " + text::quoted(text) +
        "; see 'tvpcim drives'");
  }
  Value::List drives;
  for (const std::string& word : words) {
    drives.push_back(Value::uint8(driveNumber(tool, word)));
  }
  return drives;
}

std::vector<Column> columnsOfPools(Tool& tool) {
  const SchemaClass& pools = tool.session().classNamed(Pool::KIND.className);
  const auto shareUsed = [](const Instance& instance) {
    const Pool pool(instance);
    return std::to_string(percentOf(pool.used, pool.capacity)) + "%";
  };
  return {
      plainColumn("ID", "VirtualPoolId", true),
      staying(plainColumn("NAME", "Name")),
      staying(codeColumn("TIER", pools, "TierLevel")),
      staying(sizeColumn("CAPACITY", "CapacityInSectors")),
      sizeColumn("USED", "UsedCapacityInSectors"),
      Column{"USED%", true, false, true, shareUsed},
      sizeColumn("CHUNK", "ChunkSize"),
      plainColumn("DRIVES", "NumberOfLogicalDevice", true),
      plainColumn("VOLUMES", "NumberOfVirtualVolume", true),
      staying(codeColumn("STATUS", pools, "PoolStatus")),
      plainColumn("DESCRIPTION", "Description")};
}

void listPools(Tool& tool) {
  printAll(tool, Pool::KIND, columnsOfPools(tool));
}

void createPool(Tool& tool, const PoolOptions& options) {
  const std::uint64_t size = text::parseSectors(options.size);
  const std::uint64_t chunk = text::parseSectors(options.chunk);
  const Value::List drives = drivesOf(tool, options.drives);
  const std::uint8_t tier =
      options.tier.empty() ? tierOfDrive(tool, drives.front().asUnsigned()) : tierLevelOf(options.tier);
  Arguments arguments;
  arguments.add("Name", Value::string(options.name))
      .add("Description", Value::string(options.description))
      .add("NumberOfLogicalDevice", Value::uint8(static_cast<std::uint8_t>(drives.size())))
      .add("LDDeviceNumbers", Value::array(CMPI_uint8, drives))
      .add("CapacityInSectors", Value::uint64(size))
      .add("ChunkSize", Value::uint64(chunk))
      .add("TierLevel", Value::uint8(tier));
  ServiceAnswer answer = callService(tool, "CreateVirtualPool", arguments);
  const std::optional<Pool> pool = tool.inventory().named<Pool>(options.name);
  answer.record.properties.push_back({"VirtualPoolId", Value::uint32(pool ? pool->number : 0)});
  answer.record.properties.push_back({"Name", Value::string(options.name)});
  printChange(
      tool, answer, {Pool::KIND, pool ? pool->number : 0, "created", columnsOfPools(tool)}, pool.has_value(),
      "there is no pool " + text::quoted(options.name));
}

void modifyPool(Tool& tool, const PoolOptions& options) {
  if (options.name.empty() && options.tier.empty() && options.description.empty()) {
    throw UsageError("say what to change: --name, --tier or --description; an empty text changes nothing");
  }
  const std::uint32_t number = tool.inventory().resolve(Pool::KIND, options.pool);
  Arguments changes;  // the library leaves as it is what is empty or 0
  changes.add("Name", Value::string(options.name))
      .add("TierLevel", Value::uint8(options.tier.empty() ? std::uint8_t{0} : tierLevelOf(options.tier)))
      .add("Description", Value::string(options.description));
  const ServiceAnswer answer = callService(tool, "ModifyVirtualPool", Pool::KIND, number, changes);
  const std::optional<Pool> pool = tool.inventory().find<Pool>(number);
  printChange(
      tool, answer, {Pool::KIND, number, "changed", columnsOfPools(tool)},
      pool && (options.name.empty() || pool->name == options.name) &&
          (options.description.empty() || pool->description == options.description),
      "the pool is unchanged");
}

/** "Delete pool 1 (slow), 1 GiB on drive 2 (/dev/sdb)?" */
std::string deletionOf(Tool& tool, std::uint32_t number) {
  const std::optional<Pool> pool = tool.inventory().find<Pool>(number);
  std::vector<std::string> drives;
  for (const DriveExtent& extent : tool.inventory().membersOf<DriveExtent>(Pool::KIND, number)) {
    drives.push_back(titleOf(tool, Drive::KIND, extent.drive));
  }
  return "Delete " + titleOf(tool, Pool::KIND, number) +
         (pool ? ", " + text::formatSectors(pool->capacity) : "") +
         (drives.empty() ? "" : " on " + join(drives, ", ")) + "?";
}

void listMembers(Tool& tool, const std::string& object) {
  printMembers(
      tool, Pool::KIND, object,
      {plainColumn("NUMBER", "DeviceNumber", true), plainColumn("DRIVE", "Name"),
       plainColumn("FIRST SECTOR", "LDStartRange", true), plainColumn("LAST SECTOR", "LDEndRange", true)});
}

void addCreation(CLI::App& family, Tool& tool) {
  auto options = std::make_shared<PoolOptions>();
  CLI::App& verb = addVerb(
      family, tool, "create", "Create a pool of drives of one kind",
      "Example: tvpcim pool create gold --drives 3,4 --tier ssd --size 100GiB",
      [&tool, options] { createPool(tool, *options); });
  verb.add_option("NAME", options->name, helpOnName("pool"))->required();
  verb.add_option("--drives", options->drives, "Numbers or device names of the drives, separated by commas")
      ->type_name("DRIVE,...")
      ->required();
  verb.add_option("--size", options->size, "Capacity of the pool: 100GiB, 1T, 204800s")
      ->type_name("SIZE")
      ->required();
  verb.add_option("--tier", options->tier, "ssd or hdd; default: what the drives are")
      ->check(CLI::IsMember({"ssd", "hdd"}));
  verb.add_option("--chunk", options->chunk, "Size of a chunk")->type_name("SIZE")->capture_default_str();
  verb.add_option("--description", options->description, helpOnDescription())->type_name("WORDS");
}

void addModification(CLI::App& family, Tool& tool) {
  auto options = std::make_shared<PoolOptions>();
  CLI::App& verb =
      addVerb(family, tool, "modify", "Change the name, tier or description of a pool", "", [&tool, options] {
        modifyPool(tool, *options);
      });
  verb.add_option("POOL", options->pool, "Name or identifier of the pool")->required();
  verb.add_option("--name", options->name, "New name")->type_name("WORDS");
  verb.add_option("--tier", options->tier, "New tier: ssd or hdd")->check(CLI::IsMember({"ssd", "hdd"}));
  verb.add_option("--description", options->description, "New description")->type_name("WORDS");
}

}  // namespace

void addPoolCommands(CLI::App& app, Tool& tool) {
  addVerb(app, tool, "pools", "List the pools", "", [&tool] { listPools(tool); });
  CLI::App& family = addFamily(app, "pool", "Create, modify, delete or show a pool, or list its members");
  addVerb(family, tool, "list", "List the pools, as 'tvpcim pools' does", "", [&tool] { listPools(tool); });
  addObjectVerb(
      family, tool, Pool::KIND, "show", "Show a pool and its members",
      [](Tool& own, const std::string& object) { printOne(own, Pool::KIND, object, columnsOfPools(own)); });
  addCreation(family, tool);
  addModification(family, tool);
  addDeletion(family, tool, Pool::KIND, "Delete a pool", "DeleteVirtualPool", deletionOf);
  addObjectVerb(family, tool, Pool::KIND, "members", "List the extents of a pool on its drives", listMembers);
}

}  // namespace tvp::host::tvpcim
