// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/storage/PoolCommands.h"

#include "host/tvpcim/Failure.h"
#include "host/tvpcim/output/Text.h"
#include "host/tvpcim/storage/Size.h"

#include <sstream>

namespace tvp::host::tvpcim {
namespace {

constexpr std::uint32_t LARGEST_DRIVE = 255;

std::uint8_t tierLevelOf(const std::string& word) {
  return word == "ssd" ? TIER_SSD : TIER_HDD;
}

std::string shareUsed(const Instance& pool) {
  return std::to_string(
             percentOf(numberOf(pool, "UsedCapacityInSectors"), numberOf(pool, "CapacityInSectors"))) +
         "%";
}

/** The drives of "3,4,/dev/sdb". */
std::vector<std::uint32_t> drivesOf(Inventory& inventory, const std::string& text) {
  std::vector<std::uint32_t> drives;
  std::istringstream words(text);
  for (std::string word; std::getline(words, word, ',');) {
    drives.push_back(inventory.resolve(DRIVE, trimmed(word)));
    if (drives.back() > LARGEST_DRIVE) {
      throw UsageError("drives have numbers from 0 to 255; '" + printable(word) + "' is none");
    }
  }
  if (drives.empty()) {
    throw UsageError("--drives names no drive; see 'tvpcim drives'");
  }
  return drives;
}

}  // namespace

void PoolCommands::addTo(CLI::App& app) {
  addVerb(app, "pools", "List the pools", "", [this] { list(); });
  CLI::App& family = addFamily(app, "pool", "Create, modify, delete a pool or list its members");
  addCreation(family);
  addModification(family);
  addVerb(family, "delete", "Delete a pool", "", [this] { remove(); })
      .add_option("POOL", m_pool, "Name or identifier of the pool")
      ->required();
  addVerb(family, "members", "List the extents of a pool on its drives", "", [this] { members(); })
      .add_option("POOL", m_pool, "Name or identifier of the pool")
      ->required();
}

void PoolCommands::addCreation(CLI::App& family) {
  CLI::App& verb = addVerb(
      family, "create", "Create a pool of drives of one kind",
      "Example: tvpcim pool create gold --drives 3,4 --tier ssd --size 100GiB", [this] { create(); });
  verb.add_option("NAME", m_name, "Name of the pool, 1 to 31 bytes")->required();
  verb.add_option("--drives", m_drives, "Numbers or device names of the drives, with commas")
      ->type_name("DRIVE,...")
      ->required();
  verb.add_option("--size", m_size, "Capacity of the pool: 100GiB, 1T, 204800s")
      ->type_name("SIZE")
      ->required();
  verb.add_option("--tier", m_tier, "ssd or hdd; default: what the drives are")
      ->check(CLI::IsMember({"ssd", "hdd"}));
  verb.add_option("--chunk", m_chunk, "Size of a chunk")->type_name("SIZE")->capture_default_str();
  verb.add_option("--description", m_description, "Description, up to 63 bytes")->type_name("WORDS");
}

void PoolCommands::addModification(CLI::App& family) {
  CLI::App& verb =
      addVerb(family, "modify", "Change the name, tier or description of a pool", "", [this] { modify(); });
  verb.add_option("POOL", m_pool, "Name or identifier of the pool")->required();
  verb.add_option("--name", m_name, "New name")->type_name("WORDS");
  verb.add_option("--tier", m_tier, "New tier: ssd or hdd")->check(CLI::IsMember({"ssd", "hdd"}));
  verb.add_option("--description", m_description, "New description")->type_name("WORDS");
}

void PoolCommands::list() {
  const SchemaClass& pools = classOf(POOL);
  printAll(
      POOL, {plainColumn("ID", "VirtualPoolId", true), plainColumn("NAME", "Name"),
             codeColumn("TIER", pools, "TierLevel"), sizeColumn("CAPACITY", "CapacityInSectors"),
             sizeColumn("USED", "UsedCapacityInSectors"), Column{"USED%", true, false, shareUsed},
             sizeColumn("CHUNK", "ChunkSize"), plainColumn("DRIVES", "NumberOfLogicalDevice", true),
             plainColumn("VOLUMES", "NumberOfVirtualVolume", true), codeColumn("STATUS", pools, "PoolStatus"),
             plainColumn("DESCRIPTION", "Description")});
}

std::uint8_t PoolCommands::tierOf(const std::vector<std::uint32_t>& drives) {
  const Instance* drive = inventory().byNumber(DRIVE, drives.front());
  return drive != nullptr && numberOf(*drive, "DeviceType") == DEVICE_SSD ? TIER_SSD : TIER_HDD;
}

void PoolCommands::create() {
  const std::uint64_t size = parseSectors(m_size);
  const std::uint64_t chunk = parseSectors(m_chunk);
  const std::vector<std::uint32_t> drives = drivesOf(inventory(), m_drives);
  const std::uint8_t tier = m_tier.empty() ? tierOf(drives) : tierLevelOf(m_tier);
  if (drives.size() > LARGEST_DRIVE) {
    throw UsageError("--drives names more than 255 drives");
  }
  Value::List numbers;
  for (const std::uint32_t drive : drives) {
    numbers.push_back(Value::uint8(static_cast<std::uint8_t>(drive)));
  }
  Arguments arguments;
  arguments.add("Name", Value::string(m_name))
      .add("Description", Value::string(m_description))
      .add("NumberOfLogicalDevice", Value::uint8(static_cast<std::uint8_t>(numbers.size())))
      .add("LDDeviceNumbers", Value::array(CMPI_uint8, numbers))
      .add("CapacityInSectors", Value::uint64(size))
      .add("ChunkSize", Value::uint64(chunk))
      .add("TierLevel", Value::uint8(tier));
  Instance answer = call("CreateVirtualPool", arguments);
  const Instance* pool = inventory().byName(POOL, m_name);
  confirm(pool != nullptr, "there is no pool " + printable(m_name));
  answer.properties.push_back({"VirtualPoolId", *pool->property("VirtualPoolId")});
  answer.properties.push_back({"Name", Value::string(m_name)});
  tool().print(formatter().record(answer));
}

void PoolCommands::modify() {
  if (m_name.empty() && m_tier.empty() && m_description.empty()) {
    throw UsageError("say what to change: --name, --tier or --description; an empty text changes nothing");
  }
  // The library leaves as it is what is empty or 0.
  const std::uint32_t number = inventory().resolve(POOL, m_pool);
  Arguments arguments;
  arguments.add("VirtualPoolId", Value::uint32(number))
      .add("Name", Value::string(m_name))
      .add("TierLevel", Value::uint8(m_tier.empty() ? std::uint8_t{0} : tierLevelOf(m_tier)))
      .add("Description", Value::string(m_description));
  Instance answer = call("ModifyVirtualPool", arguments);
  const Instance* pool = inventory().byNumber(POOL, number);
  confirm(
      pool != nullptr && (m_name.empty() || textOf(*pool, "Name") == m_name) &&
          (m_description.empty() || textOf(*pool, "Description") == m_description),
      "the pool is as it was");
  answer.properties.push_back({"VirtualPoolId", Value::uint32(number)});
  tool().print(formatter().record(answer));
}

void PoolCommands::remove() {
  const std::uint32_t number = inventory().resolve(POOL, m_pool);
  Arguments arguments;
  arguments.add("VirtualPoolId", Value::uint32(number));
  Instance answer = call("DeleteVirtualPool", arguments);
  confirm(
      inventory().byNumber(POOL, number) == nullptr, "pool " + std::to_string(number) + " is still there");
  answer.properties.push_back({"VirtualPoolId", Value::uint32(number)});
  tool().print(formatter().record(answer));
}

void PoolCommands::members() {
  printMembers(
      POOL, m_pool,
      {plainColumn("NUMBER", "DeviceNumber", true), plainColumn("DRIVE", "Name"),
       plainColumn("FIRST SECTOR", "LDStartRange", true), plainColumn("LAST SECTOR", "LDEndRange", true)});
}

}  // namespace tvp::host::tvpcim
